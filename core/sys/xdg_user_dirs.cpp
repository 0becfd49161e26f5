#include "core/sys/xdg_user_dirs.h"

#include "core/sys/system_files.h"

#include <QDir>

namespace tarvik::xdg {
namespace {

struct Entry {
    QString key;
    QString path;
};

std::vector<Entry> entries(std::string_view text, const QString& home) {
    std::vector<Entry> out;
    const QString h = QDir::cleanPath(home);
    for (const QString& raw : QString::fromUtf8(text.data(), qsizetype(text.size())).split('\n')) {
        const QString line = raw.trimmed();
        if (line.startsWith('#') || !line.startsWith(QLatin1String("XDG_"))) {
            continue;
        }
        const auto eq = line.indexOf('=');
        if (eq < 0) {
            continue;
        }
        QString value = line.mid(eq + 1).trimmed();
        if (value.size() >= 2 && value.startsWith('"') && value.endsWith('"')) {
            value = value.mid(1, value.size() - 2);
        }
        value.replace(QLatin1String("\\\""), QLatin1String("\""));
        if (value.startsWith(QLatin1String("$HOME"))) {
            value = h + value.mid(5);
        }
        if (!value.startsWith('/')) {
            continue; // the format allows only $HOME-relative or absolute paths
        }
        value = QDir::cleanPath(value);
        if (value != h) {
            out.push_back({line.left(eq), value});
        }
    }
    return out;
}

} // namespace

QStringList parseUserDirs(std::string_view text, const QString& home) {
    QStringList out;
    for (const auto& e : entries(text, home)) {
        out << e.path;
    }
    return out;
}

QStringList readUserDirs(const QString& configHome, const QString& home) {
    const auto text = platform::readSmallFile("/", (configHome + "/user-dirs.dirs").toStdString());
    return text ? parseUserDirs(*text, home) : QStringList{};
}

QString downloadDir(const QString& configHome, const QString& home) {
    const auto text = platform::readSmallFile("/", (configHome + "/user-dirs.dirs").toStdString());
    if (text) {
        for (const auto& e : entries(*text, home)) {
            if (e.key == QLatin1String("XDG_DOWNLOAD_DIR")) {
                return e.path;
            }
        }
    }
    return QDir::cleanPath(home) + QStringLiteral("/Downloads");
}

} // namespace tarvik::xdg
