#pragma once

#include <QString>
#include <optional>
#include <string>

namespace tarvik {

// The freedesktop.org Trash: the home trash ($XDG_DATA_HOME/Trash) for items on the home trash's
// mount, $topdir/.Trash/$uid or $topdir/.Trash-$uid on other mounts (used only when they are
// real folders of this user's, as GLib requires). Every item gets its .trashinfo, claimed under
// its final name only once fully written, then is renamed into files/ from its parent's handle,
// so `gio trash` and trash-cli list and restore it, and an interrupted move never leaves an
// empty description.
class Trash {
public:
    explicit Trash(QString homeTrash);
    static Trash forCurrentUser(); // $XDG_DATA_HOME/Trash

    const QString& homeTrash() const { return homeTrash_; }

    // Moves `name` of the folder `parentFd`, whose absolute path is `parentPath`, to the trash
    // of its mount. Returns the reason when it could not; never deletes instead.
    std::optional<QString> moveToTrash(int parentFd, const std::string& parentPath,
                                       const std::string& name) const;

    // The "info" folder that goes with `folder` when `folder` (canonical) is the "files" folder
    // of a real trash: the home trash, or a trash at the top of a mount named for this user.
    std::optional<std::string> infoFolderFor(const std::string& folder) const;
    // `path` (canonical) lies inside a real trash's "files" folder: it is in the Trash already.
    bool holds(const std::string& path) const;

    // The .trashinfo contents for an item (`path` absolute, or relative to the mount's top
    // folder for a trash there; the kernel's bytes), percent-encoded as the standard asks.
    static QByteArray trashInfo(const std::string& path, const QString& deletionDate);

private:
    QString homeTrash_;
};

} // namespace tarvik
