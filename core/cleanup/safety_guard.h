#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

// Why the guard refused a path; the description is the sentence the user reads.
struct Violation {
    enum class Kind { ProtectedPath, OutsideAllowedRoots };
    Kind kind;
    QString path; // canonical
    QString description() const;
};

// The last line of defence, applied to every item immediately before it is removed: only
// paths strictly inside the allowed roots, never a protected location, an ancestor of one, or
// anything inside a forbidden subtree.
class SafetyGuard {
public:
    // `userDirs`: the user's named folders (Desktop, Documents, … in any language), protected
    // like their English names.
    SafetyGuard(const QString& home, const QStringList& extraAllowedRoots,
                const QStringList& userDirs = {});
    // The guard every cleanup uses: this user's home, "/Applications", and the named folders
    // of user-dirs.dirs.
    static SafetyGuard forCurrentUser();

    std::optional<Violation> check(const QString& path) const;
    // Throws the Violation.
    void validate(const QString& path) const;
    bool isAllowed(const QString& path) const { return !check(path).has_value(); }

    // Parents resolved, the last component never: a symbolic link is judged as itself.
    static QString canonical(const QString& path);
    static QString stripPrivatePrefix(const QString& path);

    const QStringList& allowedRoots() const { return allowedRoots_; }
    const QStringList& protectedPaths() const { return protectedPaths_; }
    const QStringList& forbiddenSubtrees() const { return forbiddenSubtrees_; }

private:
    QStringList allowedRoots_;
    QStringList protectedPaths_;
    QStringList forbiddenSubtrees_;
};

} // namespace tarvik
