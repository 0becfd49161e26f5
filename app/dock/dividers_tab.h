#pragma once

#include "dock/dock_folders.h"
#include "dock/dock_layout.h"

#include <QWidget>

class QLabel;
class QListWidget;
class QPushButton;

namespace tarvik {

class EmptyState;

// The Dock Folders screen's "Dividers" tab: the Dock's tiles in order, blank spaces added between
// them and written on Apply, and the backups Tarvik took before each change, to put one back.
class DividersTab : public QWidget {
    Q_OBJECT
public:
    explicit DividersTab(DockFolders folders, QWidget* parent = nullptr);

    const DockLayout& layout() const { return layout_; }
    // Reads the Dock again unless there are changes not yet applied.
    void reloadUnlessChanged();

private:
    void fill();
    bool selectionIsSpacer() const;
    void addSpacer(DockSpacer kind);
    void chooseBackup();

    DockFolders dock_;
    DockLayout layout_;
    bool available_ = true;
    QLabel* unavailable_;
    QListWidget* rows_;
    EmptyState* empty_;
    QPushButton* addSpace_;
    QPushButton* addSmallSpace_;
    QPushButton* remove_;
    QPushButton* apply_;
    QPushButton* reload_;
    QPushButton* restore_;
    QLabel* status_;
    QLabel* error_;
};

} // namespace tarvik
