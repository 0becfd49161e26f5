#pragma once

#include <QString>

namespace tarvik {

// The autostart entry that runs `tarvik --launch-folders` when the user signs in, so folder
// helpers are there from the start. Separate from Start at login's own entry.
class DockFolderLoginAgent {
public:
    static constexpr const char* kEntryName = "org.pellor.tarvik.dockfolders.desktop";

    DockFolderLoginAgent(QString autostartDir, QString tarvik);
    QString entryPath() const;
    bool isInstalled() const;
    // False with `error` set when the entry couldn't be written or removed.
    bool install(QString* error) const;
    bool uninstall(QString* error) const;

private:
    QString dir_;
    QString tarvik_;
};

} // namespace tarvik
