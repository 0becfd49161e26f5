#include "core/cleanup/safety_guard.h"

#include "core/platform/xdg_paths.h"
#include "core/platform/xdg_user_dirs.h"

#include <QDir>
#include <QFile>
#include <climits>
#include <cstdlib>

namespace tarvik {
namespace {

// p lies within q: equal, or below it (a q ending in "/" gets no second slash).
bool within(const QString& p, const QString& q) {
    if (p == q) {
        return true;
    }
    return q.endsWith('/') ? p.startsWith(q) : p.startsWith(q + QLatin1Char('/'));
}

std::optional<QString> realPath(const QString& path) {
    char buffer[PATH_MAX];
    if (::realpath(QFile::encodeName(path).constData(), buffer) == nullptr) {
        return std::nullopt;
    }
    return QFile::decodeName(buffer);
}

} // namespace

QString Violation::description() const {
    return kind == Kind::ProtectedPath
               ? path + QStringLiteral(" is a protected location and was skipped.")
               : path + QStringLiteral(" is outside the locations Tarvik is allowed to clean.");
}

SafetyGuard::SafetyGuard(const QString& home, const QStringList& extraAllowedRoots,
                         const QStringList& userDirs) {
    const QString h = canonical(home);
    allowedRoots_ << h;
    for (const QString& r : extraAllowedRoots) {
        allowedRoots_ << canonical(r);
    }
    protectedPaths_ = {"/", "/System", "/Library", "/Applications", "/Users", "/usr", "/bin",
                       "/sbin", "/private", "/var", "/etc", "/opt", "/Volumes", "/cores",
                       // Linux's own system roots.
                       "/boot", "/dev", "/home", "/lib", "/lib64", "/media", "/mnt", "/proc",
                       "/root", "/run", "/snap", "/srv", "/sys"};
    static const char* const kHomeProtected[] = {
        "", "Library", "Library/Caches", "Library/Logs", "Library/Application Support",
        "Library/Preferences", "Library/Containers", "Library/Group Containers",
        "Library/Developer", "Library/Developer/Xcode", "Library/Developer/CoreSimulator",
        "Library/Mail", "Applications", "Desktop", "Documents", "Downloads", "Movies", "Music",
        "Pictures", "Public", ".Trash", ".config", ".npm", ".gradle",
        // Linux's folders of the same weight.
        ".cache", ".local", ".local/share", ".local/share/Trash", ".local/state", "Templates",
        "Videos"};
    for (const char* name : kHomeProtected) {
        // Joined by plain concatenation, not canonicalised again.
        protectedPaths_ << (*name == '\0' ? h : h + QLatin1Char('/') + QLatin1String(name));
    }
    for (const QString& dir : userDirs) {
        protectedPaths_ << canonical(dir);
    }
    forbiddenSubtrees_ = {"/System", "/usr", "/bin", "/sbin", "/boot", "/dev", "/proc", "/sys"};
    for (const char* name :
         {"Library/Keychains", "Library/Mobile Documents", "Library/CloudStorage", ".ssh", ".gnupg",
          ".local/share/keyrings", ".pki"}) {
        forbiddenSubtrees_ << h + QLatin1Char('/') + QLatin1String(name);
    }
}

SafetyGuard SafetyGuard::forCurrentUser() {
    const QString home = xdg::home();
    return SafetyGuard(home, {QStringLiteral("/Applications")},
                       xdg::readUserDirs(xdg::configHome(), home));
}

QString SafetyGuard::stripPrivatePrefix(const QString& path) {
    for (const char* prefix : {"/private/var", "/private/tmp", "/private/etc"}) {
        if (within(path, QLatin1String(prefix))) {
            return path.mid(8);
        }
    }
    return path;
}

QString SafetyGuard::canonical(const QString& path) {
    const QString standard =
        QDir::cleanPath(QDir::isAbsolutePath(path) ? path : QDir::current().absoluteFilePath(path));
    if (standard == QLatin1String("/")) {
        return standard;
    }
    QString parent = standard.section('/', 0, -2);
    QStringList tail{standard.section('/', -1)};
    for (;;) {
        if (parent.isEmpty()) {
            parent = QStringLiteral("/");
        }
        if (const auto resolved = realPath(parent)) {
            QString out = *resolved;
            for (const QString& part : tail) {
                out += (out.endsWith('/') ? QString() : QStringLiteral("/")) + part;
            }
            return stripPrivatePrefix(out);
        }
        if (parent == QLatin1String("/")) {
            return stripPrivatePrefix(standard);
        }
        tail.prepend(parent.section('/', -1));
        parent = parent.section('/', 0, -2);
    }
}

std::optional<Violation> SafetyGuard::check(const QString& path) const {
    const QString p = canonical(path);
    for (const QString& q : protectedPaths_) {
        if (p == q || q.startsWith(p.endsWith('/') ? p : p + QLatin1Char('/'))) {
            return Violation{Violation::Kind::ProtectedPath, p};
        }
    }
    for (const QString& f : forbiddenSubtrees_) {
        if (within(p, f)) {
            return Violation{Violation::Kind::ProtectedPath, p};
        }
    }
    for (const QString& r : allowedRoots_) {
        if (p != r && within(p, r)) {
            return std::nullopt;
        }
    }
    return Violation{Violation::Kind::OutsideAllowedRoots, p};
}

void SafetyGuard::validate(const QString& path) const {
    if (auto v = check(path)) {
        throw *v;
    }
}

} // namespace tarvik
