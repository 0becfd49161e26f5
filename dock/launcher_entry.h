#pragma once

#include "dock/app_folder.h"
#include "dock/dock_spacer.h"

#include <QString>

// The desktop entries Tarvik writes for the dock: folder launchers, blank spacers, the link
// handler and the autostart entry that starts folder helpers at login.
namespace tarvik::LauncherEntry {

// A desktop-entry string value: backslashes, newlines, tabs and a leading space escaped.
QString escapeValue(const QString& value);

struct FolderLauncher {
    QString helper;     // the tarvik-folder program
    QString folderFile; // the folder's JSON, which the helper reads
    QString icon;       // icon name in the hicolor theme
    qint64 version = 0; // new on every build, so docks notice the change
    bool resident = false;
    QString content; // digest of what it was built from, to tell an up-to-date build
};
QString folder(const AppFolder& folder, const FolderLauncher& launcher);

// Blank, nameless and out of application lists; clicking it runs `true`.
QString spacer(DockSpacer kind, const QString& blankIcon);

// Hands tarvik:// links to Tarvik.
QString linkHandler(const QString& tarvik);

// Starts the folder helpers when the user signs in.
QString loginAgent(const QString& tarvik);

} // namespace tarvik::LauncherEntry
