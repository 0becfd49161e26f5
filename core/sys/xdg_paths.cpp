#include "core/sys/xdg_paths.h"

#include "core/sys/file_names.h"

#include <QDir>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace tarvik::xdg {
namespace {

// The XDG rules ignore a variable that is empty or not an absolute path.
QString fromEnv(const char* name, const QString& fallback) {
    const char* v = std::getenv(name);
    if (v != nullptr && v[0] == '/') {
        return QDir::cleanPath(fileName::decode(v));
    }
    return fallback;
}

} // namespace

QString home() {
    const char* h = std::getenv("HOME");
    if (h != nullptr && h[0] == '/') {
        return QDir::cleanPath(fileName::decode(h));
    }
    if (const passwd* pw = getpwuid(getuid()); pw != nullptr && pw->pw_dir != nullptr) {
        return fileName::decode(pw->pw_dir);
    }
    return QStringLiteral("/");
}

QString configHome() {
    return fromEnv("XDG_CONFIG_HOME", home() + QStringLiteral("/.config"));
}

QString dataHome() {
    return fromEnv("XDG_DATA_HOME", home() + QStringLiteral("/.local/share"));
}

QString stateHome() {
    return fromEnv("XDG_STATE_HOME", home() + QStringLiteral("/.local/state"));
}

QString cacheHome() {
    return fromEnv("XDG_CACHE_HOME", home() + QStringLiteral("/.cache"));
}

QString autostartDir() {
    return configHome() + QStringLiteral("/autostart");
}

QString applicationSupport() {
    return dataHome() + QStringLiteral("/Tarvik");
}

} // namespace tarvik::xdg
