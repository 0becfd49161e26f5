#include "core/sys/file_paths.h"

#include "core/sys/file_names.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace tarvik::filePath {

bool isWithin(QStringView p, QStringView q) {
    if (p == q) {
        return true;
    }
    if (q.endsWith(QLatin1Char('/'))) {
        return p.startsWith(q);
    }
    return p.size() > q.size() && p.startsWith(q) && p[q.size()] == QLatin1Char('/');
}

bool isStrictlyWithin(std::string_view p, std::string_view q) {
    if (q == "/") {
        return p.size() > 1 && p.front() == '/';
    }
    return p.size() > q.size() && p.substr(0, q.size()) == q && p[q.size()] == '/';
}

QString currentFolder() {
    char buffer[PATH_MAX];
    return ::getcwd(buffer, sizeof buffer) != nullptr ? fileName::decode(buffer)
                                                      : QStringLiteral("/");
}

QString absolute(const QString& path) {
    if (path.startsWith(QLatin1Char('/'))) {
        return path;
    }
    const QString here = currentFolder();
    return here == QLatin1String("/") ? QLatin1Char('/') + path : here + QLatin1Char('/') + path;
}

std::optional<QString> resolved(const QString& path) {
    char buffer[PATH_MAX];
    if (::realpath(fileName::encode(path).c_str(), buffer) == nullptr) {
        return std::nullopt;
    }
    return fileName::decode(buffer);
}

} // namespace tarvik::filePath
