#include "app/files/reveal_in_file_manager.h"

#include "core/sys/file_manager.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace tarvik {

void revealInFileManager(const QString& path) {
    // Without a file manager on the bus, the folder opens in whatever shows folders.
    sys::showInFileManager(path, [path] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
    });
}

} // namespace tarvik
