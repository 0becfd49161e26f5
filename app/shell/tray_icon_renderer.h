#pragma once

#include "core/monitor/menu_bar_readings.h"

#include <QIcon>
#include <QImage>
#include <QRectF>
#include <optional>
#include <vector>

namespace tarvik {

// What the tray item shows. Tray hosts draw a square icon (and no text beside it), so:
// - no readings: the app symbol, whether or not it was chosen (an item can't be empty);
// - one reading: its glyph above its figure;
// - two readings: one row each, glyph then figure;
// - three or more: one row each, glyph then a bar, as many rows as keep a glyph legible;
// - the symbol and readings: the symbol above the first reading's row.
// Figures lose their "%" (the glyph says what they are); the tooltip has every reading in
// words, including those the square has no room for.
struct TrayIconContent {
    bool symbol = true;
    std::vector<MenuBarReading> readings;
};

// Rows of bars a square of `size` pixels has room for: glyphs under 7 px can't be told apart.
std::size_t maxBarRows(double size);

// Where each part goes in a square of `size` pixels.
struct TrayIconLayout {
    struct Row {
        std::size_t reading; // index into the content's readings
        QRectF glyph;
        QRectF figure; // the number's box, or the bar's
        bool bar = false;
    };
    std::optional<QRectF> symbol;
    std::vector<Row> rows;
};
TrayIconLayout layoutTrayIcon(const TrayIconContent& content, double size);

// The icon at `size` logical pixels for a screen of `devicePixelRatio`. Light figures and glyphs
// with a dark halo read on light and dark panels alike; bars take a colour only for what their
// level means.
QImage renderTrayIcon(const TrayIconContent& content, int size, double devicePixelRatio = 1.0);
// The icon for a tray: drawn at whatever size and pixel ratio the tray asks for.
QIcon trayIcon(const TrayIconContent& content);
// The tooltip: "Tarvik" and the readings in words, one per line.
QString trayTooltip(const std::vector<MenuBarReading>& readings);

} // namespace tarvik
