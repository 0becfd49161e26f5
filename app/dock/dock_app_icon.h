#pragma once

#include <QIcon>
#include <QString>

namespace tarvik {

// An app's icon from its desktop entry's Icon value (a theme name or an absolute file), with a
// generic application icon when the entry names none or the theme lacks it.
QIcon dockAppIcon(const QString& icon);

} // namespace tarvik
