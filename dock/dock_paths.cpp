#include "dock/dock_paths.h"

#include "core/sys/xdg_paths.h"

#include <QFileInfo>

namespace tarvik {

DockPaths DockPaths::current() {
    DockPaths paths;
    paths.applications = xdg::dataHome() + QStringLiteral("/applications");
    paths.icons = xdg::dataHome() + QStringLiteral("/icons/hicolor");
    paths.autostart = xdg::autostartDir();
    // The window runs inside the main program, so /proc/self/exe is tarvik itself in both.
    paths.tarvik = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
    paths.helper = QFileInfo(paths.tarvik).path() + QStringLiteral("/tarvik-folder");
    return paths;
}

} // namespace tarvik
