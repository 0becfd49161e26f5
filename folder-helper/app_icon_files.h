#pragma once

#include <QImage>
#include <QString>

namespace tarvik {

// Finds and reads an application's icon without a running desktop: a desktop entry's Icon is
// an absolute file or a name looked up in the user's and the system's icon folders (the
// hicolor theme every application installs into, then Adwaita, then pixmaps). Safe from any
// thread and in a program without a window.
namespace AppIconFiles {

// The best file for `icon` at `pixels`: a scalable one, else the smallest at least that large,
// else the largest. Empty when nothing is found.
QString find(const QString& icon, int pixels);
// The icon drawn `pixels` square, or a null image when there is none or it can't be read.
QImage load(const QString& icon, int pixels);

} // namespace AppIconFiles
} // namespace tarvik
