#include "folder-helper/app_icon.h"

#include "folder-helper/app_icon_files.h"

#include <QApplication>
#include <QPixmap>
#include <QStyle>

namespace tarvik {
namespace {

// A theme icon only when it has a picture at least that large: icons never grow when drawn,
// and a 16-pixel one would stand small among the others.
QIcon fromTheme(const QString& icon, int pixels) {
    if (icon.isEmpty() || icon.startsWith(QLatin1Char('/')) || !QIcon::hasThemeIcon(icon)) {
        return {};
    }
    QIcon found = QIcon::fromTheme(icon);
    return found.actualSize(QSize(pixels, pixels)).width() >= pixels ? found : QIcon();
}

QIcon fromFiles(const QString& icon, int pixels) {
    const QImage image = icon.isEmpty() ? QImage() : AppIconFiles::load(icon, pixels);
    return image.isNull() ? QIcon() : QIcon(QPixmap::fromImage(image));
}

} // namespace

QIcon appIcon(const QString& icon, int pixels) {
    const QString generic = QStringLiteral("application-x-executable");
    for (const QString& name : {icon, generic}) {
        if (QIcon found = fromTheme(name, pixels); !found.isNull()) {
            return found;
        }
        if (QIcon found = fromFiles(name, pixels); !found.isNull()) {
            return found;
        }
    }
    const QPixmap last = QApplication::style()->standardIcon(QStyle::SP_DesktopIcon).pixmap(pixels);
    return QIcon(last.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

} // namespace tarvik
