#include "folder-helper/app_icon_files.h"

#include "core/sys/xdg_paths.h"

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QStringList>

namespace tarvik::AppIconFiles {
namespace {

QStringList iconBases() {
    QStringList bases{xdg::dataHome() + QStringLiteral("/icons"),
                      xdg::home() + QStringLiteral("/.icons")};
    QString dirs = qEnvironmentVariable("XDG_DATA_DIRS");
    if (dirs.isEmpty()) {
        dirs = QStringLiteral("/usr/local/share:/usr/share");
    }
    for (const QString& d : dirs.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        bases.append(d + QStringLiteral("/icons"));
    }
    return bases;
}

struct Candidate {
    QString path;
    int pixels = 0; // 0: scalable
};

// Better when scalable; else the smallest at least `want`; else the largest.
bool better(const Candidate& a, const Candidate& b, int want) {
    if (b.path.isEmpty()) {
        return true;
    }
    if ((a.pixels == 0) != (b.pixels == 0)) {
        return a.pixels == 0;
    }
    const bool aFits = a.pixels >= want;
    const bool bFits = b.pixels >= want;
    if (aFits != bFits) {
        return aFits;
    }
    return aFits ? a.pixels < b.pixels : a.pixels > b.pixels;
}

void searchTheme(const QString& themeDir, const QString& name, int want, Candidate& best) {
    const QDir theme(themeDir);
    if (!theme.exists()) {
        return;
    }
    for (const QString& size : theme.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        int pixels = 0;
        if (size != QLatin1String("scalable")) {
            bool ok = false;
            pixels = size.section(QLatin1Char('x'), 0, 0).toInt(&ok);
            const int scale =
                size.contains(QLatin1Char('@')) ? size.section(QLatin1Char('@'), 1).toInt() : 1;
            if (!ok || pixels <= 0 || scale <= 0) {
                continue;
            }
            pixels *= scale;
        }
        for (const char* ext : {".svg", ".png"}) {
            const QString path = themeDir + QLatin1Char('/') + size + QStringLiteral("/apps/") +
                                 name + QLatin1String(ext);
            Candidate c{path, pixels};
            if (QFileInfo::exists(path) && better(c, best, want)) {
                best = c;
            }
        }
    }
}

} // namespace

QString find(const QString& icon, int pixels) {
    if (icon.isEmpty()) {
        return {};
    }
    if (icon.startsWith(QLatin1Char('/'))) {
        return QFileInfo::exists(icon) ? icon : QString();
    }
    if (icon.contains(QLatin1Char('/'))) {
        return {};
    }
    // Desktop entries sometimes name the file: "app.png" means "app".
    QString name = icon;
    for (const char* ext : {".png", ".svg", ".xpm"}) {
        if (name.endsWith(QLatin1String(ext))) {
            name.chop(4);
        }
    }
    const QStringList bases = iconBases();
    for (const char* theme : {"hicolor", "Adwaita"}) {
        Candidate best;
        for (const QString& base : bases) {
            searchTheme(base + QLatin1Char('/') + QLatin1String(theme), name, pixels, best);
        }
        if (!best.path.isEmpty()) {
            return best.path;
        }
    }
    for (const QString& base : bases) {
        const QString pixmaps = QFileInfo(base).path() + QStringLiteral("/pixmaps/");
        for (const char* ext : {".svg", ".png", ".xpm"}) {
            if (QFileInfo::exists(pixmaps + name + QLatin1String(ext))) {
                return pixmaps + name + QLatin1String(ext);
            }
        }
    }
    return {};
}

QImage load(const QString& icon, int pixels) {
    const QString path = find(icon, pixels);
    if (path.isEmpty()) {
        return {};
    }
    QImageReader reader(path);
    const QSize natural = reader.size();
    if (natural.isValid() && natural != QSize(pixels, pixels)) {
        reader.setScaledSize(natural.scaled(pixels, pixels, Qt::KeepAspectRatio));
    }
    QImage image = reader.read();
    if (image.isNull()) {
        return {};
    }
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace tarvik::AppIconFiles
