#pragma once

#include "core/monitor/menu_bar_stat.h"

#include <QPainterPath>

namespace tarvik {

// The small sign that says which reading a figure is: a chip for CPU, a memory stick, arrows
// down and up onto a line for download and upload, a card with a fan for the GPU, a battery,
// and a sparkle for an agent. One filled outline, so it can be drawn in a single ink with a
// halo; it fills `box` keeping its square shape.
QPainterPath readingGlyph(MenuBarStat stat, const QRectF& box);

} // namespace tarvik
