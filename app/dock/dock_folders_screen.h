#pragma once

#include "dock/dock_folders.h"

#include <QWidget>

class QTabWidget;

namespace tarvik {

class DividersTab;
class FoldersTab;
class Preferences;

// Dock Folders: folders of apps that sit in the Dock ("Folders"), blank spaces between the
// Dock's apps and its backups ("Dividers"), and the links that a folder's helper opens.
class DockFoldersScreen : public QWidget {
    Q_OBJECT
public:
    DockFoldersScreen(DockFolders folders, Preferences& preferences, QWidget* parent = nullptr);

    QTabWidget* tabs() const { return tabs_; }
    FoldersTab* foldersTab() const { return folders_; }
    DividersTab* dividersTab() const { return dividers_; }

    // An open link shows its folder; a remove link takes the app out of its folder.
    void openLink(const FolderLink& link);

private:
    QTabWidget* tabs_;
    FoldersTab* folders_;
    DividersTab* dividers_;
};

} // namespace tarvik
