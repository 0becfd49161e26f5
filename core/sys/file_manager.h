#pragma once

#include <QString>
#include <functional>

namespace tarvik::sys {

// Asks the desktop's file manager (org.freedesktop.FileManager1 on the session bus) to show
// `path` selected in its folder. Asynchronous, as starting a file manager can take a moment;
// `otherwise` runs when no file manager answers.
void showInFileManager(const QString& path, std::function<void()> otherwise);

} // namespace tarvik::sys
