#pragma once

#include "core/shell/app_section.h"

#include <QIcon>
#include <QStringList>

namespace tarvik {

// The freedesktop icon names tried, in order, for a section's symbol name.
QStringList themeIconNames(std::string_view symbol);
// The section's icon from the desktop's theme (or Adwaita); when no theme has one, a drawn
// badge with the section's initial, so every theme shows an icon.
QIcon sectionIcon(AppSection section);
// The theme's icon for a symbol name, or a drawn badge with the first letter of `badge`.
QIcon symbolIcon(std::string_view symbol, const QString& badge);
// The application's own icon.
QIcon appIcon();

} // namespace tarvik
