#pragma once

#include "dock/app_folder.h"
#include "dock/dock_paths.h"
#include "dock/dock_preferences.h"
#include "dock/folder_link.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace tarvik {

struct DockFoldersOptions {
    bool hideGroupedApps = false; // dockFoldersHideGroupedApps
    bool showIndicators = false;  // dockFoldersShowIndicators
    bool rebuildAll = false;      // also folders whose launcher is up to date
};

// What an Apply did, for the screen and the command to tell.
struct DockFoldersReport {
    QStringList before; // the dock's tiles
    QStringList after;
    QStringList built;    // launchers written
    QStringList removed;  // files of deleted folders
    QStringList problems; // one sentence each; the rest of the work went on
    QString backup;       // the backup taken before the dock was written, if it was
    bool dockChanged() const { return before != after; }
};

// The dock folders as a whole: saving the list, building each folder's launcher, placing the
// folders in the dock, the links from their helpers, and the login agent.
class DockFolders {
public:
    DockFolders(DockPaths paths = DockPaths::current(),
                DockFolderStore store = DockFolderStore(DockFolderStore::defaultSupportDirectory()),
                DockPreferences preferences = DockPreferences());

    const DockPaths& paths() const { return paths_; }
    const DockFolderStore& store() const { return store_; }

    // The folders at a glance, for Smart Scan and `tarvik status`: "2 folders, 1 in the dock".
    QString summary() const;
    const DockPreferences& preferences() const { return preferences_; }

    // Whether this desktop's dock shows an open dot under a launcher whose program keeps no
    // window. GNOME shows it only for apps with a window, so there resident helpers would
    // only cost memory.
    static bool dockShowsDotsForWindowlessApps();
    static QString openDotsUnavailable();

    // Saves `folders`, builds their launchers, removes deleted folders' files and writes the
    // dock's new list (after a backup). Throws DockPreferencesError when the dock can't be
    // changed at all; a folder that fails to build is named in `problems` and left out.
    DockFoldersReport apply(const std::vector<AppFolder>& folders,
                            const DockFoldersOptions& options) const;

    // Carries out a remove link: the app leaves the folder, the list is saved and the folder's
    // launcher rebuilt.
    struct Removal {
        bool removed = false;
        QString message; // a sentence saying what happened
    };
    Removal applyRemoval(const FolderLink& link) const;

    // Puts a backed-up list back (after backing up the current one), with the blank launchers
    // of its spacers. Returns the list written. Throws DockPreferencesError.
    QStringList restore(const DockBackup& backup) const;

    // Makes Tarvik the handler of tarvik:// links unless something of Tarvik's already is.
    // False with `error` set on failure.
    bool registerLinkHandler(QString* error) const;

    // Starts `tarvik-folder --background` for each folder in the dock; returns how many.
    int launchHelpers(const std::vector<AppFolder>& folders) const;
    // Asks every running resident helper of this user to quit and waits up to 2 s.
    void terminateRunningHelpers() const;

private:
    DockPaths paths_;
    DockFolderStore store_;
    DockPreferences preferences_;
};

} // namespace tarvik
