#pragma once

#include "core/monitor/menu_bar_readings.h"

#include <QIcon>
#include <QImage>
#include <vector>

namespace tarvik {

// Draws the tray readings into a square icon that stays legible when the tray shrinks it to
// 16–24 px: one or two readings as numbers, three or more as bars. Light figures with a dark
// halo read on light and dark panels alike.
QImage renderTrayReadings(const std::vector<MenuBarReading>& readings, int size);
QIcon trayReadingsIcon(const std::vector<MenuBarReading>& readings);
// The tooltip: "Tarvik" and the readings in words, one per line.
QString trayTooltip(const std::vector<MenuBarReading>& readings);

} // namespace tarvik
