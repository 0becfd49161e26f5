#include "cli/commands.h"
#include "cli/output.h"
#include "core/settings/preferences.h"
#include "dock/dock_folders.h"

namespace tarvik::cli {

int runLaunchFolders() {
    const Preferences prefs;
    if (!prefs.dockFoldersShowIndicators()) {
        return kExitOk;
    }
    if (!DockFolders::dockShowsDotsForWindowlessApps()) {
        printError(DockFolders::openDotsUnavailable());
        return kExitOk;
    }
    // A missing or damaged folder list is no folders: nothing to start.
    const DockFolders dock;
    dock.launchHelpers(dock.store().load());
    return kExitOk;
}

} // namespace tarvik::cli
