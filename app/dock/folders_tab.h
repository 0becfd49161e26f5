#pragma once

#include "app/shell/background_job.h"
#include "dock/dock_folders.h"

#include <QImage>
#include <QUuid>
#include <QWidget>
#include <optional>
#include <vector>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace tarvik {

class Preferences;

// The Dock Folders screen's "Folders" tab: the folder list, the chosen folder's name and apps in
// grid order, the installed apps to add, a preview of the folder's icon, the two options and
// Apply. The list is saved as it is edited; the Dock changes only on Apply.
class FoldersTab : public QWidget {
    Q_OBJECT
public:
    FoldersTab(DockFolders folders, Preferences& preferences, QWidget* parent = nullptr);
    ~FoldersTab() override;

    const std::vector<AppFolder>& folders() const { return list_; }
    std::optional<QUuid> selectedFolder() const;
    // False when no folder has that id.
    bool selectFolder(const QUuid& id);
    // Reads the saved list again, keeping the selection where it can.
    void reload();
    // Carries out a remove link off the interface thread, then says what happened.
    void applyRemoval(const FolderLink& link);
    // One sentence in the status line (a link to a folder that is gone).
    void showStatus(const QString& text);
    bool isBusy() const;

signals:
    // The Dock's list may have changed: an Apply ran.
    void dockChanged();

private:
    // What a run off the interface thread ended with.
    struct Outcome {
        std::optional<DockFoldersReport> report;
        QString sentence; // a remove link's
        QString error;
    };

    void fillFolders(std::optional<QUuid> select);
    void showFolder();
    void fillApps();
    void filterPicker(const QString& text);
    void addChosenApps();
    void moveApp(int by);
    void removeApp();
    void takeAppOrder();
    void newFolder();
    void confirmDelete();
    void edited();
    void apply();
    void finished(const Outcome& outcome);
    void renderPreview();
    void setBusy(bool busy);
    AppFolder* current();

    DockFolders dock_;
    Preferences& prefs_;
    std::vector<AppFolder> list_;
    bool filling_ = false;
    bool previewAgain_ = false;

    QLabel* unavailable_;
    QListWidget* folderList_;
    QLabel* noFolders_;
    QPushButton* rename_;
    QPushButton* delete_;
    QWidget* detail_;
    QLineEdit* name_;
    QCheckBox* showInDock_;
    QLabel* preview_;
    QListWidget* apps_;
    QLabel* noApps_;
    QPushButton* moveUp_;
    QPushButton* moveDown_;
    QPushButton* removeApp_;
    QLineEdit* search_;
    QListWidget* picker_;
    QPushButton* add_;
    QCheckBox* hideGrouped_;
    QCheckBox* openDots_;
    QPushButton* apply_;
    QLabel* status_;
    QLabel* problems_;

    BackgroundJob<Outcome> job_;
    BackgroundJob<QImage> previewJob_;
};

} // namespace tarvik
