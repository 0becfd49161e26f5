#include "app/dock/dock_folders_screen.h"

#include "app/dock/dividers_tab.h"
#include "app/dock/folders_tab.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/theme.h"

#include <QTabWidget>
#include <QVBoxLayout>

namespace tarvik {

DockFoldersScreen::DockFoldersScreen(DockFolders folders, Preferences& preferences, QWidget* parent)
    : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout->setSpacing(space::m);
    layout->addWidget(
        new ScreenHeader(tr("Dock Folders"), sectionSubtitle(AppSection::DockFolders), this));

    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("dockTabs"));
    tabs_->setDocumentMode(true);
    folders_ = new FoldersTab(folders, preferences, tabs_);
    folders_->setObjectName(QStringLiteral("foldersTab"));
    dividers_ = new DividersTab(folders, tabs_);
    dividers_->setObjectName(QStringLiteral("dividersTab"));
    tabs_->addTab(folders_, tr("&Folders"));
    tabs_->addTab(dividers_, tr("D&ividers"));
    layout->addWidget(tabs_, 1);

    // Each tab shows the Dock as the other one left it.
    connect(folders_, &FoldersTab::dockChanged, dividers_, &DividersTab::reloadUnlessChanged);
    connect(tabs_, &QTabWidget::currentChanged, this, [this] {
        if (tabs_->currentWidget() == dividers_) {
            dividers_->reloadUnlessChanged();
        }
    });
}

void DockFoldersScreen::openLink(const FolderLink& link) {
    tabs_->setCurrentWidget(folders_);
    if (link.kind == FolderLink::Kind::Remove) {
        folders_->applyRemoval(link);
        return;
    }
    if (folders_->isBusy()) {
        folders_->showStatus(tr("Tarvik is still applying; open the folder again when it's done."));
        return;
    }
    folders_->reload();
    if (!folders_->selectFolder(link.folder)) {
        folders_->showStatus(tr("That folder no longer exists."));
    }
}

} // namespace tarvik
