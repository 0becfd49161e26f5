#include "cli/commands.h"
#include "cli/output.h"
#include "core/settings/preferences.h"
#include "core/text/counts.h"
#include "dock/app_folder.h"

namespace tarvik::cli {

int runLaunchFolders() {
    const Preferences prefs;
    if (!prefs.dockFoldersShowIndicators()) {
        return kExitOk;
    }
    const auto folders = DockFolderStore(DockFolderStore::defaultSupportDirectory()).load();
    if (!folders.empty()) {
        printError(QStringLiteral("Found %1, but starting their helpers is not available in "
                                  "this version yet.")
                       .arg(countOf(folders.size(), u"Dock folder", u"Dock folders")));
    }
    return kExitOk;
}

} // namespace tarvik::cli
