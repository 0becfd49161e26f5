#pragma once

#include "core/shell/app_section.h"

#include <QColor>
#include <QIcon>
#include <optional>

namespace tarvik {

// Tarvik's own symbols: one monochrome SVG set, drawn at any size and pixel ratio in the
// palette's text colour (white on a selected row, muted when disabled) or in `tint`.
bool hasSymbol(std::string_view symbol);
// A symbol that is not in the set falls back to a drawn badge with the first letter of `badge`.
QIcon symbolIcon(std::string_view symbol, const QString& badge = {},
                 std::optional<QColor> tint = std::nullopt);
QIcon sectionIcon(AppSection section);
// The application's own icon.
QIcon appIcon();

} // namespace tarvik
