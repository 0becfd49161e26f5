#include "core/monitor/menu_bar_stat.h"

#include <algorithm>

namespace tarvik {

ReadingLevel level(MenuBarStat stat, double fraction) {
    switch (stat) {
    case MenuBarStat::Cpu:
    case MenuBarStat::Memory:
    case MenuBarStat::Gpu:
        return fraction >= 0.9   ? ReadingLevel::Critical
               : fraction >= 0.7 ? ReadingLevel::Watch
                                 : ReadingLevel::Good;
    case MenuBarStat::Battery:
    case MenuBarStat::Agent:
        return fraction <= 0.1    ? ReadingLevel::Critical
               : fraction <= 0.25 ? ReadingLevel::Watch
                                  : ReadingLevel::Good;
    case MenuBarStat::Download:
    case MenuBarStat::Upload:
        break;
    }
    return ReadingLevel::Neutral;
}

std::string_view rawKey(MenuBarStat stat) {
    switch (stat) {
    case MenuBarStat::Cpu:
        return "cpu";
    case MenuBarStat::Memory:
        return "memory";
    case MenuBarStat::Download:
        return "download";
    case MenuBarStat::Upload:
        return "upload";
    case MenuBarStat::Gpu:
        return "gpu";
    case MenuBarStat::Battery:
        return "battery";
    case MenuBarStat::Agent:
        return "agent";
    }
    return {};
}

std::string_view symbol(MenuBarStat stat) {
    switch (stat) {
    case MenuBarStat::Cpu:
        return "cpu";
    case MenuBarStat::Memory:
        return "memorychip";
    case MenuBarStat::Download:
        return "arrow.down";
    case MenuBarStat::Upload:
        return "arrow.up";
    case MenuBarStat::Gpu:
        return "gpu";
    case MenuBarStat::Battery:
        return "battery.25";
    case MenuBarStat::Agent:
        return "sparkles";
    }
    return {};
}

std::string_view title(MenuBarStat stat) {
    switch (stat) {
    case MenuBarStat::Cpu:
        return "CPU";
    case MenuBarStat::Memory:
        return "Memory";
    case MenuBarStat::Download:
        return "Download";
    case MenuBarStat::Upload:
        return "Upload";
    case MenuBarStat::Gpu:
        return "GPU";
    case MenuBarStat::Battery:
        return "Battery";
    case MenuBarStat::Agent:
        return "Agent";
    }
    return {};
}

std::optional<MenuBarStat> menuBarStatFromRawKey(std::string_view key) {
    for (auto stat : kAllMenuBarStats) {
        if (rawKey(stat) == key) {
            return stat;
        }
    }
    return std::nullopt;
}

std::vector<MenuBarStat> parseMenuBarStats(std::string_view stored) {
    std::array<bool, kAllMenuBarStats.size()> present{};
    while (!stored.empty()) {
        const auto comma = stored.find(',');
        const auto piece = stored.substr(0, comma);
        if (auto stat = menuBarStatFromRawKey(piece)) {
            present[static_cast<std::size_t>(*stat)] = true;
        }
        stored = comma == std::string_view::npos ? std::string_view{} : stored.substr(comma + 1);
    }
    std::vector<MenuBarStat> out;
    for (auto stat : kAllMenuBarStats) {
        if (present[static_cast<std::size_t>(stat)]) {
            out.push_back(stat);
        }
    }
    return out;
}

std::string writeMenuBarStats(const std::vector<MenuBarStat>& chosen) {
    std::string out;
    for (auto stat : kAllMenuBarStats) {
        if (std::find(chosen.begin(), chosen.end(), stat) != chosen.end()) {
            if (!out.empty()) {
                out += ',';
            }
            out += rawKey(stat);
        }
    }
    return out;
}

} // namespace tarvik
