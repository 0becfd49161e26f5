#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QUuid>
#include <optional>
#include <vector>

namespace tarvik {

// An application in a folder: its name, its desktop entry's file and the desktop-file id
// ("org.gnome.Nautilus.desktop") by which the dock and the system know it.
struct AppEntry {
    QString name;
    QString path;
    std::optional<QString> bundleIdentifier;

    // The reference a link carries and the dock lists: the desktop-file id, or the entry's
    // file name when the id is unknown.
    QString reference() const;
};

struct AppFolder {
    QUuid id;
    QString name;
    std::vector<AppEntry> apps; // grid order
    bool showInDock = true;

    // "org.pellor.tarvik.folder.<uuid>"; its launcher's desktop-file id adds ".desktop".
    QString bundleIdentifier() const;
    QString launcherId() const;
    // The name made safe as one file name: no slash, no NUL, no leading dot, not empty.
    QString sanitizedName() const;
};

inline constexpr int kFolderIconApps = 9; // the first nine apps appear on the folder's icon

// A distinct file name for each folder, from its sanitised name, numbered " 2", " 3"… when
// names collide (case-insensitively, as some file systems compare them).
QHash<QUuid, QString> bundleNames(const std::vector<AppFolder>& folders);

// Decodes the saved folder list. A document that is not a JSON array of folders is an empty
// list; an entry without a readable id is skipped, other missing fields take their defaults.
std::vector<AppFolder> decodeFolders(const QByteArray& json);
std::optional<AppFolder> decodeFolder(const QByteArray& json);
// Pretty-printed, keys sorted.
QByteArray encodeFolders(const std::vector<AppFolder>& folders);
QByteArray encodeFolder(const AppFolder& folder);

// Where the folder list lives, and the folders' own directories that their helpers read.
class DockFolderStore {
public:
    explicit DockFolderStore(QString supportDirectory);
    static QString defaultSupportDirectory(); // <Application Support>/DockFolders

    QString supportDirectory() const { return dir_; }
    QString listPath() const;         // folders.json
    QString foldersDirectory() const; // Folders
    // A missing or unreadable file is an empty list.
    std::vector<AppFolder> load() const;
    // False with `error` set when the list couldn't be written; the old list then stays.
    bool save(const std::vector<AppFolder>& folders, QString* error) const;

private:
    QString dir_;
};

} // namespace tarvik
