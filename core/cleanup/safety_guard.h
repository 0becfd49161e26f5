#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

// Why the guard refused a path; the description is the sentence the user reads.
struct Violation {
    enum class Kind {
        ProtectedPath,
        OutsideAllowedRoots,
        // The path ends in "." or "..", or is empty: it names a folder by where one stands.
        NamedByDots,
        // A ".." follows a symbolic link, so the kernel would go elsewhere than the text says,
        // or follows a folder that is missing, so the kernel would go nowhere.
        DotDotAfterLink,
        // The home folder is "/" or not a folder of this user's: nothing may be removed.
        NoUsableHome,
    };
    Kind kind;
    QString path; // canonical, or as given when it has no canonical form
    QString description() const;
};

// The last line of defence, applied to every item immediately before it is removed: only
// paths strictly inside the allowed roots, never a protected location, an ancestor of one, or
// anything inside a forbidden subtree.
class SafetyGuard {
public:
    // `home` is resolved in full (a home reached through a link, as /home → /var/home, is judged
    // where it really is). A home of "/", or one that is not a folder owned by this user, allows
    // nothing. `extraProtected` and `extraForbidden` add the user's own places: the named folders
    // (Desktop, Documents, … in any language) and the XDG folders where they were moved.
    SafetyGuard(const QString& home, const QStringList& extraAllowedRoots,
                const QStringList& extraProtected = {}, const QStringList& extraForbidden = {});
    // The guard every cleanup uses: this user's home, "/Applications", the named folders of
    // user-dirs.dirs and the XDG base folders from the environment.
    static SafetyGuard forCurrentUser();

    struct Judgement {
        QString canonical;
        std::optional<Violation> violation;
    };
    // The canonical path is worked out once; what is removed is what was judged.
    Judgement judge(const QString& path) const;
    std::optional<Violation> check(const QString& path) const { return judge(path).violation; }
    // Throws the Violation.
    void validate(const QString& path) const;
    bool isAllowed(const QString& path) const { return !check(path).has_value(); }

    // Parents resolved, the last component never: a symbolic link is judged as itself.
    static QString canonical(const QString& path);
    static QString stripPrivatePrefix(const QString& path);

    const QStringList& allowedRoots() const { return allowedRoots_; }
    const QStringList& protectedPaths() const { return protectedPaths_; }
    const QStringList& forbiddenSubtrees() const { return forbiddenSubtrees_; }
    // Why nothing may be removed at all, when the home folder is unusable.
    const std::optional<Violation>& homeProblem() const { return homeProblem_; }

private:
    std::optional<Violation> checkCanonical(const QString& p) const;

    QStringList allowedRoots_;
    QStringList protectedPaths_;
    QStringList forbiddenSubtrees_;
    std::optional<Violation> homeProblem_;
};

} // namespace tarvik
