#pragma once

#include <QString>

namespace tarvik {

// Opens the file manager with the file selected, through the freedesktop FileManager1
// interface that Files, Dolphin, Nemo, Thunar and others offer on the session bus; where no
// file manager answers, opens the file's folder instead.
void revealInFileManager(const QString& path);

} // namespace tarvik
