#pragma once

#include <QString>
#include <optional>
#include <string>

namespace tarvik {

// The freedesktop.org Trash: the home trash ($XDG_DATA_HOME/Trash) for items on the home file
// system, $topdir/.Trash/$uid or $topdir/.Trash-$uid on other mounts. Every item gets its
// .trashinfo (claimed first with O_EXCL, so two trashings never collide), then is renamed
// into files/ from its parent's handle, so `gio trash` and trash-cli list and restore it.
class Trash {
public:
    explicit Trash(QString homeTrash);
    static Trash forCurrentUser(); // $XDG_DATA_HOME/Trash

    const QString& homeTrash() const { return homeTrash_; }

    // Moves `name` of the folder `parentFd`, whose absolute path is `parentPath`, to the trash
    // of its file system. Returns the reason when it could not; never deletes instead.
    std::optional<QString> moveToTrash(int parentFd, const std::string& parentPath,
                                       const std::string& name) const;

    // The .trashinfo contents for an item (`path` absolute, or relative to the mount's top
    // folder for a trash there), percent-encoded as the standard asks.
    static QByteArray trashInfo(const std::string& path, const QString& deletionDate);

private:
    QString homeTrash_;
};

} // namespace tarvik
