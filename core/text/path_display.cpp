#include "core/text/path_display.h"

#include <QDir>

namespace tarvik::PathDisplay {

QString abbreviate(const QString& path, const QString& home) {
    QString p = QDir::cleanPath(path);
    const QString h = QDir::cleanPath(home);
    if (p == h) {
        return QStringLiteral("~");
    }
    if (h != QLatin1String("/") && p.startsWith(h + QLatin1Char('/'))) {
        return QStringLiteral("~") + p.mid(h.size());
    }
    return p;
}

} // namespace tarvik::PathDisplay
