#pragma once

#include <QByteArray>
#include <QString>
#include <QUuid>
#include <optional>
#include <vector>

namespace tarvik {

struct AppEntry {
    QString name;
    QString path;
    std::optional<QString> bundleIdentifier;
};

struct AppFolder {
    QUuid id;
    QString name;
    std::vector<AppEntry> apps; // grid order
    bool showInDock = true;
};

// Decodes the saved folder list. A document that is not a JSON array of folders is an empty
// list; an entry without a readable id is skipped, other missing fields take their defaults.
std::vector<AppFolder> decodeFolders(const QByteArray& json);

// Where the folder list and the generated folder launchers live.
class DockFolderStore {
public:
    explicit DockFolderStore(QString supportDirectory);
    static QString defaultSupportDirectory(); // <Application Support>/DockFolders

    QString listPath() const; // folders.json
    // A missing or unreadable file is an empty list.
    std::vector<AppFolder> load() const;

private:
    QString dir_;
};

} // namespace tarvik
