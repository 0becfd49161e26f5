#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik {

// The readings the tray item can show, in display order.
enum class MenuBarStat { Cpu, Memory, Download, Upload, Gpu, Battery, Agent };

inline constexpr std::array<MenuBarStat, 7> kAllMenuBarStats{
    MenuBarStat::Cpu, MenuBarStat::Memory,  MenuBarStat::Download, MenuBarStat::Upload,
    MenuBarStat::Gpu, MenuBarStat::Battery, MenuBarStat::Agent};

// How a reading stands: rates have no good or bad, loads are bad when high, and the battery's
// charge and an agent's share left when low.
enum class ReadingLevel { Neutral, Good, Watch, Critical };
ReadingLevel level(MenuBarStat stat, double fraction);

std::string_view rawKey(MenuBarStat stat);
std::string_view title(MenuBarStat stat);
// The symbol name of the reading, kept as data as the sections' are.
std::string_view symbol(MenuBarStat stat);
std::optional<MenuBarStat> menuBarStatFromRawKey(std::string_view key);

// The stored form is the raw keys joined with ",". Reading keeps case order whatever the
// stored order, drops empty pieces and ignores unknown keys; writing uses case order.
std::vector<MenuBarStat> parseMenuBarStats(std::string_view stored);
std::string writeMenuBarStats(const std::vector<MenuBarStat>& chosen);

} // namespace tarvik
