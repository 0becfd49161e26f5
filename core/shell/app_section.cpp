#include "core/shell/app_section.h"

#include <algorithm>

namespace tarvik {
namespace {

using G = SectionGroup;
using S = AppSection;

constexpr std::array<SectionInfo, kSectionCount> kSections{{
    {S::Overview, "overview", "Smart Scan", "Overview", "sparkles", std::nullopt},
    {S::SystemJunk, "systemJunk", "System Junk", "Junk", "trash.circle", G::Clean},
    {S::LargeFiles, "largeFiles", "Large & Old Files", "Large Files", "doc.badge.ellipsis",
     G::Clean},
    {S::Duplicates, "duplicates", "Duplicates", "Duplicates", "doc.on.doc", G::Clean},
    {S::ProjectJunk, "projectJunk", "Developer Junk", "Dev Junk",
     "chevron.left.forwardslash.chevron.right", G::Clean},
    {S::SpaceLens, "spaceLens", "Space Lens", "Space Lens", "chart.pie", G::Analyze},
    {S::Monitor, "monitor", "System Monitor", "Monitor", "waveform.path.ecg", G::Analyze},
    {S::DevServers, "devServers", "Dev Servers", "Dev Servers", "server.rack", G::Analyze},
    {S::Agents, "agents", "Agents", "Agents", "cpu", G::Analyze},
    {S::SpeedTest, "speedTest", "Speed Test", "Speed Test", "speedometer", G::Analyze},
    {S::DeviceCheck, "deviceCheck", "Device Check", "Device Check", "stethoscope", G::Analyze},
    {S::SystemInfo, "systemInfo", "System Info", "System Info", "info.circle", G::Analyze},
    {S::Uninstaller, "uninstaller", "Uninstaller", "Uninstaller", "xmark.app", G::Manage},
    {S::Homebrew, "homebrew", "Homebrew", "Homebrew", "mug", G::Manage},
    {S::DockFolders, "dockFolders", "Dock Folders", "Dock", "square.grid.3x3.fill", G::Manage},
    {S::KeepAwake, "keepAwake", "Keep Awake", "Keep Awake", "cup.and.heat.waves", G::Manage},
    {S::Settings, "settings", "Settings", "Settings", "slider.horizontal.3", std::nullopt},
}};

constexpr std::array<SectionGroup, 4> kGroups{G::Clean, G::Analyze, G::Manage, G::Utilities};

template <SectionGroup group> constexpr std::size_t memberCount() {
    return static_cast<std::size_t>(std::count_if(
        kSections.begin(), kSections.end(), [](const SectionInfo& s) { return s.group == group; }));
}

template <SectionGroup group> constexpr auto membersOf() {
    std::array<AppSection, memberCount<group>()> out{};
    std::size_t i = 0;
    for (const auto& s : kSections) {
        if (s.group == group) {
            out[i++] = s.section;
        }
    }
    return out;
}

constexpr auto kClean = membersOf<G::Clean>();
constexpr auto kAnalyze = membersOf<G::Analyze>();
constexpr auto kManage = membersOf<G::Manage>();
constexpr auto kUtilities = membersOf<G::Utilities>();

} // namespace

std::span<const SectionInfo, kSectionCount> allSections() {
    return kSections;
}

const SectionInfo& info(AppSection section) {
    return kSections[static_cast<std::size_t>(section)];
}

std::optional<AppSection> sectionFromRawKey(std::string_view rawKey) {
    for (const auto& s : kSections) {
        if (s.rawKey == rawKey) {
            return s.section;
        }
    }
    return std::nullopt;
}

std::span<const SectionGroup, 4> allGroups() {
    return kGroups;
}

std::string_view rawValue(SectionGroup group) {
    switch (group) {
    case G::Clean:
        return "Clean";
    case G::Analyze:
        return "Analyze";
    case G::Manage:
        return "Manage";
    case G::Utilities:
        return "Utilities";
    }
    return {};
}

std::optional<SectionGroup> groupFromRawValue(std::string_view raw) {
    for (auto g : kGroups) {
        if (rawValue(g) == raw) {
            return g;
        }
    }
    return std::nullopt;
}

std::span<const AppSection> sections(SectionGroup group) {
    switch (group) {
    case G::Clean:
        return kClean;
    case G::Analyze:
        return kAnalyze;
    case G::Manage:
        return kManage;
    case G::Utilities:
        return kUtilities;
    }
    return {};
}

} // namespace tarvik
