#pragma once

#include "core/monitor/menu_bar_stat.h"
#include "core/monitor/system_reading.h"

#include <QString>
#include <optional>
#include <vector>

namespace tarvik {

// One tray reading: a compact figure for the icon ("23%", "1.2M"), the same in words for the
// tooltip ("CPU 23%"), and the share 0…1 a bar would fill. A reading the machine cannot give
// is a dash, never a made-up number.
struct MenuBarReading {
    MenuBarStat stat;
    QString compact;
    QString words;
    std::optional<double> fraction;
};

// What the "agent" reading shows: the share of the current session left for the first enabled
// agent, or in a few words why there is none.
struct AgentSessionReading {
    QString provider;
    std::optional<double> left;
    QString problem;
};

std::vector<MenuBarReading>
menuBarReadings(const std::optional<SystemReading>& reading, const std::vector<MenuBarStat>& stats,
                const std::optional<AgentSessionReading>& agent = std::nullopt);

// A rate in at most four characters: "0", "850K", "1.2M", "12M", "3.4G".
QString compactRate(double bytesPerSecond);

} // namespace tarvik
