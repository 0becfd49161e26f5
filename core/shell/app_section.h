#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace tarvik {

enum class SectionGroup { Clean, Analyze, Manage, Utilities };

// The sidebar's sections in sidebar and keyboard-navigation order.
enum class AppSection {
    Overview,
    SystemJunk,
    LargeFiles,
    Duplicates,
    ProjectJunk,
    SpaceLens,
    Monitor,
    DevServers,
    Agents,
    SpeedTest,
    DeviceCheck,
    SystemInfo,
    Uninstaller,
    Homebrew,
    DockFolders,
    KeepAwake,
    Settings,
};

struct SectionInfo {
    AppSection section;
    std::string_view rawKey;
    std::string_view title;
    std::string_view shortTitle;
    std::string_view symbol; // an SF Symbols name, kept as data; the window maps it to a theme icon
    std::optional<SectionGroup> group;
};

constexpr std::size_t kSectionCount = 17;

std::span<const SectionInfo, kSectionCount> allSections();
const SectionInfo& info(AppSection section);
std::optional<AppSection> sectionFromRawKey(std::string_view rawKey);

std::span<const SectionGroup, 4> allGroups();
std::string_view rawValue(SectionGroup group);
std::optional<SectionGroup> groupFromRawValue(std::string_view raw);
// The sections whose group is `group`, in section order; "Utilities" names none.
std::span<const AppSection> sections(SectionGroup group);

} // namespace tarvik
