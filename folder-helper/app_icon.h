#pragma once

#include <QIcon>
#include <QString>

namespace tarvik {

// An app's icon from its desktop entry's Icon: the desktop's icon theme first, then the icon
// folders read directly (a session without a theme set still finds hicolor's), then a generic
// program icon, so a tile never stands empty.
QIcon appIcon(const QString& icon, int pixels);

} // namespace tarvik
