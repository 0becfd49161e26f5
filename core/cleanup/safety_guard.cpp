#include "core/cleanup/safety_guard.h"

#include "core/sys/file_calls.h"
#include "core/sys/file_names.h"
#include "core/sys/file_paths.h"
#include "core/sys/xdg_paths.h"
#include "core/sys/xdg_user_dirs.h"

#include <QDir>
#include <sys/stat.h>
#include <unistd.h>

namespace tarvik {
namespace {

using filePath::absolute;
using filePath::isWithin;

std::optional<QString> realPath(const QString& path) {
    return filePath::resolved(path);
}

// The last component, trailing slashes ignored, is "." or "..": rm refuses these too.
bool endsInDots(const QString& path) {
    QString p = path;
    while (p.size() > 1 && p.endsWith('/')) {
        p.chop(1);
    }
    const QString last = p.section('/', -1);
    return last == QLatin1String(".") || last == QLatin1String("..");
}

// Some ".." comes after a symbolic link: the kernel goes up from where the link leads, the text
// from where the link lies. Each ".." is checked both ways; one the kernel cannot take at all
// (after a missing folder or a file) is refused too, as rm would fail there.
bool dotDotAfterLink(const QString& path) {
    const QStringList parts = path.split('/');
    if (!parts.contains(QStringLiteral(".."))) {
        return false;
    }
    QString prefix;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        prefix += (i == 0 ? QString() : QStringLiteral("/")) + parts[i];
        if (parts[i] != QLatin1String("..")) {
            continue;
        }
        const auto byKernel = realPath(prefix);
        if (!byKernel || realPath(QDir::cleanPath(prefix)) != byKernel) {
            return true;
        }
    }
    return false;
}

} // namespace

QString Violation::description() const {
    // Bytes of a name that are not UTF-8 are shown as \xNN: the sentence is for a person.
    const QString shown = fileName::display(path);
    switch (kind) {
    case Kind::ProtectedPath:
        return shown + QStringLiteral(" is a protected location and was skipped.");
    case Kind::OutsideAllowedRoots:
        return shown + QStringLiteral(" is outside the locations Tarvik is allowed to clean.");
    case Kind::NamedByDots:
        return path.isEmpty()
                   ? QStringLiteral("An empty path names nothing and was skipped.")
                   : shown + QStringLiteral(" ends in “.” or “..” and was skipped: name the "
                                            "folder by its own path.");
    case Kind::DotDotAfterLink:
        return shown +
               QStringLiteral(" goes up with “..” from a symbolic link or a missing folder, "
                              "so it is unclear which folder it means, and was skipped.");
    case Kind::NoUsableHome:
        return path == QLatin1String("/")
                   ? QStringLiteral("Your home folder is “/”, so Tarvik removes nothing: it "
                                    "cleans only inside a home folder of your own.")
                   : QStringLiteral("Your home folder “%1” is not a folder you own, so Tarvik "
                                    "removes nothing.")
                         .arg(shown);
    }
    return {};
}

SafetyGuard::SafetyGuard(const QString& home, const QStringList& extraAllowedRoots,
                         const QStringList& extraProtected, const QStringList& extraForbidden) {
    // Home itself is resolved too: a home that is a link is judged where it leads.
    const QString h = realPath(home).value_or(canonical(home));
    struct stat st {};
    if (h == QLatin1String("/") || sys::stat(fileName::encode(h).c_str(), &st) != 0 ||
        !S_ISDIR(st.st_mode) || st.st_uid != ::getuid()) {
        homeProblem_ = Violation{Violation::Kind::NoUsableHome, h};
    } else {
        allowedRoots_ << h;
        for (const QString& r : extraAllowedRoots) {
            allowedRoots_ << canonical(r);
        }
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
    for (const QString& p : extraProtected) {
        protectedPaths_ << canonical(p);
    }
    forbiddenSubtrees_ = {"/System", "/usr", "/bin", "/sbin", "/boot", "/dev", "/proc", "/sys"};
    for (const char* name :
         {"Library/Keychains", "Library/Mobile Documents", "Library/CloudStorage", ".ssh", ".gnupg",
          ".local/share/keyrings", ".pki"}) {
        forbiddenSubtrees_ << h + QLatin1Char('/') + QLatin1String(name);
    }
    for (const QString& f : extraForbidden) {
        forbiddenSubtrees_ << canonical(f);
    }
    // A protected place that is itself a link (~/.ssh → ~/dotfiles/ssh) is protected where it
    // leads too: items are judged with their folders resolved, so they name the target.
    for (QStringList* list : {&protectedPaths_, &forbiddenSubtrees_}) {
        const qsizetype given = list->size();
        for (qsizetype i = 0; i < given; ++i) {
            if (const auto real = realPath(list->at(i)); real && *real != list->at(i)) {
                *list << *real;
            }
        }
    }
}

SafetyGuard SafetyGuard::forCurrentUser() {
    const QString home = xdg::home();
    QStringList protectedPlaces = xdg::readUserDirs(xdg::configHome(), home);
    // Wherever the XDG variables moved them, these folders weigh what ~/.config and the rest do.
    protectedPlaces << xdg::configHome() << xdg::dataHome()
                    << xdg::dataHome() + QStringLiteral("/Trash") << xdg::stateHome()
                    << xdg::cacheHome();
    return SafetyGuard(home, {QStringLiteral("/Applications")}, protectedPlaces,
                       {xdg::dataHome() + QStringLiteral("/keyrings")});
}

QString SafetyGuard::stripPrivatePrefix(const QString& path) {
    for (const char* prefix : {"/private/var", "/private/tmp", "/private/etc"}) {
        if (isWithin(path, QString::fromLatin1(prefix))) {
            return path.mid(8);
        }
    }
    return path;
}

QString SafetyGuard::canonical(const QString& path) {
    const QString standard = QDir::cleanPath(absolute(path));
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

SafetyGuard::Judgement SafetyGuard::judge(const QString& path) const {
    if (path.isEmpty() || endsInDots(path)) {
        return {QString(), Violation{Violation::Kind::NamedByDots, path}};
    }
    const QString p = canonical(path);
    if (dotDotAfterLink(absolute(path))) {
        return {p, Violation{Violation::Kind::DotDotAfterLink, path}};
    }
    return {p, checkCanonical(p)};
}

std::optional<Violation> SafetyGuard::checkCanonical(const QString& p) const {
    for (const QString& q : protectedPaths_) {
        if (p == q || q.startsWith(p.endsWith('/') ? p : p + QLatin1Char('/'))) {
            return Violation{Violation::Kind::ProtectedPath, p};
        }
    }
    for (const QString& f : forbiddenSubtrees_) {
        if (isWithin(p, f)) {
            return Violation{Violation::Kind::ProtectedPath, p};
        }
    }
    if (homeProblem_) {
        return homeProblem_;
    }
    for (const QString& r : allowedRoots_) {
        if (p != r && isWithin(p, r)) {
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
