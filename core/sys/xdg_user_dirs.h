#pragma once

#include <QString>
#include <QStringList>
#include <string_view>

namespace tarvik::xdg {

// The user's named folders from user-dirs.dirs (XDG_DESKTOP_DIR="$HOME/Schreibtisch", …), as
// absolute paths, in the file's order. Entries that point at home itself are left out.
QStringList parseUserDirs(std::string_view text, const QString& home);
// user-dirs.dirs under the config folder; none when it is missing.
QStringList readUserDirs(const QString& configHome, const QString& home);
// The download folder: XDG_DOWNLOAD_DIR when named, else ~/Downloads.
QString downloadDir(const QString& configHome, const QString& home);

} // namespace tarvik::xdg
