#include "app/dock/dock_app_icon.h"

#include "folder-helper/app_icon_files.h"

#include <QFileInfo>
#include <QPixmap>

namespace tarvik {

QIcon dockAppIcon(const QString& icon) {
    static const QIcon fallback = QIcon::fromTheme(QStringLiteral("application-x-executable"));
    if (icon.isEmpty()) {
        return fallback;
    }
    if (QFileInfo(icon).isAbsolute()) {
        return QFileInfo::exists(icon) ? QIcon(icon) : fallback;
    }
    if (QIcon::hasThemeIcon(icon)) {
        return QIcon::fromTheme(icon);
    }
    // Apps that install only into hicolor or pixmaps, which a desktop's own theme may not reach.
    const QString file = AppIconFiles::find(icon, 32);
    return file.isEmpty() ? fallback : QIcon(file);
}

} // namespace tarvik
