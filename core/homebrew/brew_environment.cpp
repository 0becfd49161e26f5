#include "core/homebrew/brew_environment.h"

#include "core/sys/file_calls.h"

#include <QFile>
#include <QFileInfo>
#include <unistd.h>

namespace tarvik {
namespace {

bool isExecutableFile(const QString& path) {
    const QFileInfo info(path);
    return info.isFile() && sys::access(QFile::encodeName(path).constData(), X_OK) == 0;
}

} // namespace

QStringList defaultBrewCandidates() {
    return {QStringLiteral("/opt/homebrew/bin/brew"), QStringLiteral("/usr/local/bin/brew"),
            QStringLiteral("/home/linuxbrew/.linuxbrew/bin/brew")};
}

std::optional<QString> locateBrew(const QStringList& candidates,
                                  const std::optional<QString>& path) {
    for (const QString& c : candidates) {
        if (isExecutableFile(c)) {
            return c;
        }
    }
    if (path) {
        for (const QString& dir : path->split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
            const QString candidate = dir + QStringLiteral("/brew");
            if (isExecutableFile(candidate)) {
                return candidate;
            }
        }
    }
    return std::nullopt;
}

QString parseBrewVersion(const QString& output) {
    QString first = output.section(QLatin1Char('\n'), 0, 0);
    first.remove(QStringLiteral("Homebrew "));
    return first.section(QLatin1Char('-'), 0, 0);
}

QString brewPrefix(const QString& brewPath) {
    return brewPath.section(QLatin1Char('/'), 0, -3);
}

} // namespace tarvik
