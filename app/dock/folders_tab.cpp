#include "app/dock/folders_tab.h"

#include "app/dock/dock_widgets.h"
#include "app/shell/card.h"
#include "app/shell/quiet_label.h"
#include "app/shell/theme.h"
#include "core/settings/preferences.h"
#include "core/sys/desktop_apps.h"
#include "core/text/counts.h"
#include "folder-helper/app_icon.h"
#include "folder-helper/folder_icon_renderer.h"

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace tarvik {
namespace {

using dock_widgets::button;
using dock_widgets::showText;

constexpr int kPreviewSize = 96;
constexpr int kIdRole = Qt::UserRole;
constexpr int kPathRole = Qt::UserRole + 1;
constexpr int kIconRole = Qt::UserRole + 2;

QLabel* problemLabel(QWidget* parent, const QString& name) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setWordWrap(true);
    setTextMeaning(label, Meaning::Critical);
    label->hide();
    return label;
}

bool isInstalled(const AppEntry& app) {
    if (!app.path.isEmpty() && QFileInfo::exists(app.path)) {
        return true;
    }
    return app.bundleIdentifier && DesktopApps::find(*app.bundleIdentifier).has_value();
}

QString reportText(const DockFoldersReport& report) {
    QStringList lines;
    lines << QStringLiteral("Built %1.").arg(countOf(report.built.size(), u"folder", u"folders"));
    if (!report.removed.isEmpty()) {
        lines << QStringLiteral("Removed %1 of deleted folders.")
                     .arg(countOf(report.removed.size(), u"file", u"files"));
    }
    if (report.dockChanged()) {
        lines << QStringLiteral("The Dock was updated. Its previous list was backed up first: "
                                "Restore Backup… on the Dividers tab puts it back.");
    } else {
        lines << QStringLiteral("The Dock already showed these folders, so it wasn't changed.");
    }
    return lines.join(QLatin1Char(' '));
}

} // namespace

FoldersTab::FoldersTab(DockFolders folders, Preferences& preferences, QWidget* parent)
    : QWidget(parent), dock_(std::move(folders)), prefs_(preferences),
      job_(this, {}, [this](Outcome outcome) { finished(outcome); }),
      previewJob_(this, {}, [this](QImage image) {
          image.setDevicePixelRatio(devicePixelRatioF());
          preview_->setPixmap(QPixmap::fromImage(image));
          if (std::exchange(previewAgain_, false)) {
              renderPreview();
          }
      }) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, space::m, 0, 0);
    layout->setSpacing(space::m);

    unavailable_ = problemLabel(this, QStringLiteral("dockUnavailable"));
    setTextMeaning(unavailable_, Meaning::Watch);
    layout->addWidget(unavailable_);
    // Apply and what it (or a link) did stay at the top, in sight without scrolling.
    auto* applyRow = new QHBoxLayout();
    auto* reports = new QVBoxLayout();
    status_ = quietLabel(QString(), this);
    status_->setObjectName(QStringLiteral("folderStatus"));
    status_->hide();
    reports->addWidget(status_);
    problems_ = problemLabel(this, QStringLiteral("folderProblems"));
    reports->addWidget(problems_);
    applyRow->addLayout(reports, 1);
    apply_ = button(tr("&Apply"), QStringLiteral("applyFolders"), this);
    apply_->setDefault(true);
    apply_->setToolTip(tr("Builds the folders and puts them in the Dock, after a backup"));
    applyRow->addWidget(apply_, 0, Qt::AlignTop);
    layout->addLayout(applyRow);

    auto* columns = new QHBoxLayout();
    columns->setSpacing(space::m);

    // The folders.
    auto* listCard = new Card(tr("Folders"), this, "folder");
    folderList_ = new QListWidget(listCard);
    folderList_->setObjectName(QStringLiteral("folderList"));
    folderList_->setAccessibleName(tr("Folders"));
    folderList_->setMinimumWidth(180);
    folderList_->setMaximumHeight(320);
    listCard->body()->addWidget(folderList_, 1);
    noFolders_ = quietLabel(tr("No folders yet. New Folder makes one; add apps to it and Apply "
                               "to put it in the Dock."),
                            listCard);
    noFolders_->setObjectName(QStringLiteral("noFolders"));
    listCard->body()->addWidget(noFolders_);
    auto* listButtons = new QHBoxLayout();
    auto* newFolder = button(tr("&New Folder"), QStringLiteral("newFolder"), listCard);
    rename_ = button(tr("Re&name"), QStringLiteral("renameFolder"), listCard);
    delete_ = button(tr("&Delete…"), QStringLiteral("deleteFolder"), listCard);
    listButtons->addWidget(newFolder);
    listButtons->addWidget(rename_);
    listButtons->addWidget(delete_);
    listButtons->addStretch(1);
    listCard->body()->addLayout(listButtons);
    columns->addWidget(listCard, 2);

    // The chosen folder.
    auto* folderCard = new Card(tr("Folder"), this);
    detail_ = folderCard;
    auto* top = new QHBoxLayout();
    auto* fields = new QVBoxLayout();
    auto* nameRow = new QHBoxLayout();
    auto* nameLabel = new QLabel(tr("Na&me:"), folderCard);
    name_ = new QLineEdit(folderCard);
    name_->setObjectName(QStringLiteral("folderName"));
    name_->setAccessibleName(tr("Folder name"));
    nameLabel->setBuddy(name_);
    nameRow->addWidget(nameLabel);
    nameRow->addWidget(name_, 1);
    fields->addLayout(nameRow);
    showInDock_ = new QCheckBox(tr("Show in &Dock"), folderCard);
    showInDock_->setObjectName(QStringLiteral("showInDock"));
    fields->addWidget(showInDock_);
    fields->addWidget(quietLabel(tr("The first %1 apps appear on the folder's icon, in this "
                                    "order. Drag them, or use Move Up and Move Down, to change it.")
                                     .arg(kFolderIconApps),
                                 folderCard));
    fields->addStretch(1);
    top->addLayout(fields, 1);
    preview_ = new QLabel(folderCard);
    preview_->setObjectName(QStringLiteral("folderPreview"));
    preview_->setAccessibleName(tr("The folder's icon"));
    preview_->setFixedSize(kPreviewSize, kPreviewSize);
    preview_->setAlignment(Qt::AlignCenter);
    top->addWidget(preview_, 0, Qt::AlignTop);
    folderCard->body()->addLayout(top);
    apps_ = new QListWidget(folderCard);
    apps_->setObjectName(QStringLiteral("folderApps"));
    apps_->setAccessibleName(tr("Apps in the folder, in grid order"));
    apps_->setDragDropMode(QAbstractItemView::InternalMove);
    apps_->setDefaultDropAction(Qt::MoveAction);
    apps_->setSelectionMode(QAbstractItemView::SingleSelection);
    apps_->setIconSize(QSize(24, 24));
    apps_->setMinimumHeight(150);
    apps_->setMaximumHeight(260);
    folderCard->body()->addWidget(apps_, 1);
    noApps_ = quietLabel(tr("No apps in this folder yet: pick them under Add Apps."), folderCard);
    noApps_->setObjectName(QStringLiteral("noApps"));
    folderCard->body()->addWidget(noApps_);
    auto* appButtons = new QHBoxLayout();
    moveUp_ = button(tr("Move &Up"), QStringLiteral("moveAppUp"), folderCard);
    moveDown_ = button(tr("Move Do&wn"), QStringLiteral("moveAppDown"), folderCard);
    removeApp_ = button(tr("Remo&ve"), QStringLiteral("removeApp"), folderCard);
    moveUp_->setToolTip(tr("Alt+Up in the list"));
    moveDown_->setToolTip(tr("Alt+Down in the list"));
    appButtons->addWidget(moveUp_);
    appButtons->addWidget(moveDown_);
    appButtons->addWidget(removeApp_);
    appButtons->addStretch(1);
    folderCard->body()->addLayout(appButtons);
    columns->addWidget(folderCard, 3);
    layout->addLayout(columns);

    // The installed apps.
    auto* pickCard = new Card(tr("Add Apps"), this, "magnifyingglass");
    search_ = new QLineEdit(pickCard);
    search_->setObjectName(QStringLiteral("appSearch"));
    search_->setAccessibleName(tr("Search installed apps"));
    search_->setPlaceholderText(tr("Search installed apps"));
    search_->setClearButtonEnabled(true);
    pickCard->body()->addWidget(search_);
    picker_ = new QListWidget(pickCard);
    picker_->setObjectName(QStringLiteral("appPicker"));
    picker_->setAccessibleName(tr("Installed apps"));
    picker_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    picker_->setIconSize(QSize(24, 24));
    picker_->setMinimumHeight(160);
    for (const DesktopApp& app : DesktopApps::installed()) {
        auto* item = new QListWidgetItem(appIcon(app.icon, 32), app.name, picker_);
        item->setData(kIdRole, app.id);
        item->setData(kPathRole, app.path);
        item->setData(kIconRole, app.icon);
        item->setToolTip(app.id);
    }
    pickCard->body()->addWidget(picker_);
    auto* addRow = new QHBoxLayout();
    add_ = button(tr("&Add to Folder"), QStringLiteral("addApps"), pickCard);
    addRow->addWidget(add_);
    addRow->addStretch(1);
    pickCard->body()->addLayout(addRow);
    layout->addWidget(pickCard);

    // The options and Apply.
    auto* applyCard = new Card(tr("When Applying"), this);
    hideGrouped_ = new QCheckBox(tr("Remove grouped apps' own Dock icons"), applyCard);
    hideGrouped_->setObjectName(QStringLiteral("hideGroupedApps"));
    applyCard->body()->addWidget(hideGrouped_);
    applyCard->body()->addWidget(quietLabel(tr("When applying, apps that are inside a folder are "
                                               "removed from the Dock (they stay installed)."),
                                            applyCard));
    openDots_ = new QCheckBox(tr("Show open dot under folders"), applyCard);
    openDots_->setObjectName(QStringLiteral("showOpenDots"));
    applyCard->body()->addWidget(openDots_);
    const bool dots = DockFolders::dockShowsDotsForWindowlessApps();
    auto* dotsNote = quietLabel(dots ? tr("Keeps a tiny helper running per folder so the Dock "
                                          "shows a dot while any of its apps are open. Takes "
                                          "effect on Apply.")
                                     : DockFolders::openDotsUnavailable(),
                                applyCard);
    dotsNote->setObjectName(QStringLiteral("openDotsNote"));
    applyCard->body()->addWidget(dotsNote);
    openDots_->setEnabled(dots);
    layout->addWidget(applyCard);
    layout->addStretch(1);

    {
        const QSignalBlocker blockHide(hideGrouped_);
        const QSignalBlocker blockDots(openDots_);
        hideGrouped_->setChecked(prefs_.dockFoldersHideGroupedApps());
        openDots_->setChecked(dots && prefs_.dockFoldersShowIndicators());
    }
    connect(hideGrouped_, &QCheckBox::toggled, this, [this](bool on) {
        prefs_.setValue(pref::kDockFoldersHideGroupedApps, on);
        prefs_.sync();
    });
    connect(openDots_, &QCheckBox::toggled, this, [this](bool on) {
        prefs_.setValue(pref::kDockFoldersShowIndicators, on);
        prefs_.sync();
    });
    connect(newFolder, &QPushButton::clicked, this, &FoldersTab::newFolder);
    connect(rename_, &QPushButton::clicked, this, [this] {
        name_->setFocus(Qt::OtherFocusReason);
        name_->selectAll();
    });
    connect(delete_, &QPushButton::clicked, this, &FoldersTab::confirmDelete);
    connect(folderList_, &QListWidget::currentRowChanged, this, [this] {
        if (!filling_) {
            showFolder();
        }
    });
    connect(name_, &QLineEdit::textEdited, this, [this](const QString& text) {
        if (AppFolder* folder = current()) {
            folder->name = text;
            folderList_->currentItem()->setText(text);
        }
    });
    connect(name_, &QLineEdit::editingFinished, this, [this] {
        AppFolder* folder = current();
        if (folder == nullptr) {
            return;
        }
        if (folder->name.trimmed().isEmpty()) {
            folder->name = tr("New Folder"); // a folder needs a name to be told apart in the Dock
            name_->setText(folder->name);
            folderList_->currentItem()->setText(folder->name);
        }
        edited();
    });
    connect(showInDock_, &QCheckBox::toggled, this, [this](bool on) {
        if (AppFolder* folder = current(); folder != nullptr && !filling_) {
            folder->showInDock = on;
            edited();
        }
    });
    // A drag within the list moves the rows; the folder takes the new order from them.
    connect(apps_->model(), &QAbstractItemModel::rowsMoved, this, [this] {
        if (!filling_) {
            takeAppOrder();
        }
    });
    connect(apps_, &QListWidget::currentRowChanged, this, [this](int row) {
        moveUp_->setEnabled(row > 0);
        moveDown_->setEnabled(row >= 0 && row + 1 < apps_->count());
        removeApp_->setEnabled(row >= 0);
    });
    connect(moveUp_, &QPushButton::clicked, this, [this] { moveApp(-1); });
    connect(moveDown_, &QPushButton::clicked, this, [this] { moveApp(1); });
    connect(removeApp_, &QPushButton::clicked, this, &FoldersTab::removeApp);
    auto* upKey = new QShortcut(QKeySequence(Qt::ALT | Qt::Key_Up), apps_, nullptr, nullptr,
                                Qt::WidgetShortcut);
    auto* downKey = new QShortcut(QKeySequence(Qt::ALT | Qt::Key_Down), apps_, nullptr, nullptr,
                                  Qt::WidgetShortcut);
    auto* deleteKey =
        new QShortcut(QKeySequence::Delete, apps_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(upKey, &QShortcut::activated, this, [this] { moveApp(-1); });
    connect(downKey, &QShortcut::activated, this, [this] { moveApp(1); });
    connect(deleteKey, &QShortcut::activated, this, &FoldersTab::removeApp);
    connect(search_, &QLineEdit::textChanged, this, &FoldersTab::filterPicker);
    connect(picker_, &QListWidget::itemActivated, this, [this] { addChosenApps(); });
    connect(picker_, &QListWidget::itemSelectionChanged, this, [this] {
        add_->setEnabled(current() != nullptr && !picker_->selectedItems().isEmpty());
    });
    connect(add_, &QPushButton::clicked, this, &FoldersTab::addChosenApps);
    connect(apply_, &QPushButton::clicked, this, &FoldersTab::apply);

    const auto why = DockPreferences::unavailableReason();
    showText(unavailable_, why.value_or(QString()));
    apply_->setEnabled(!why);
    list_ = dock_.store().load();
    fillFolders(list_.empty() ? std::nullopt : std::optional<QUuid>(list_.front().id));
}

FoldersTab::~FoldersTab() = default;

AppFolder* FoldersTab::current() {
    const int row = folderList_->currentRow();
    return row >= 0 && row < static_cast<int>(list_.size()) ? &list_[static_cast<std::size_t>(row)]
                                                            : nullptr;
}

std::optional<QUuid> FoldersTab::selectedFolder() const {
    const int row = folderList_->currentRow();
    if (row < 0 || row >= static_cast<int>(list_.size())) {
        return std::nullopt;
    }
    return list_[static_cast<std::size_t>(row)].id;
}

bool FoldersTab::selectFolder(const QUuid& id) {
    const auto it =
        std::find_if(list_.begin(), list_.end(), [&](const AppFolder& f) { return f.id == id; });
    if (it == list_.end()) {
        return false;
    }
    folderList_->setCurrentRow(static_cast<int>(it - list_.begin()));
    return true;
}

void FoldersTab::reload() {
    const auto selected = selectedFolder();
    list_ = dock_.store().load();
    fillFolders(selected);
}

void FoldersTab::fillFolders(std::optional<QUuid> select) {
    filling_ = true;
    folderList_->clear();
    int row = list_.empty() ? -1 : 0;
    for (std::size_t i = 0; i < list_.size(); ++i) {
        auto* item = new QListWidgetItem(list_[i].name, folderList_);
        item->setData(kIdRole, list_[i].id);
        if (select && list_[i].id == *select) {
            row = static_cast<int>(i);
        }
    }
    folderList_->setCurrentRow(row);
    filling_ = false;
    const bool none = list_.empty();
    folderList_->setVisible(!none);
    noFolders_->setVisible(none);
    showFolder();
}

void FoldersTab::showFolder() {
    AppFolder* folder = current();
    detail_->setEnabled(folder != nullptr);
    rename_->setEnabled(folder != nullptr);
    delete_->setEnabled(folder != nullptr);
    filling_ = true;
    name_->setText(folder != nullptr ? folder->name : QString());
    showInDock_->setChecked(folder != nullptr && folder->showInDock);
    filling_ = false;
    add_->setEnabled(folder != nullptr && !picker_->selectedItems().isEmpty());
    fillApps();
}

void FoldersTab::fillApps() {
    AppFolder* folder = current();
    const int keep = apps_->currentRow();
    filling_ = true;
    apps_->clear();
    if (folder != nullptr) {
        for (const AppEntry& app : folder->apps) {
            const std::optional<DesktopApp> known =
                app.bundleIdentifier ? DesktopApps::find(*app.bundleIdentifier) : std::nullopt;
            const bool installed = isInstalled(app);
            const QString text = installed ? app.name : tr("%1 (not installed)").arg(app.name);
            auto* item =
                new QListWidgetItem(appIcon(known ? known->icon : QString(), 32), text, apps_);
            item->setData(kIdRole, app.reference());
            // Dropping onto a row would replace it; rows only move between each other.
            item->setFlags(item->flags() & ~Qt::ItemIsDropEnabled);
        }
    }
    filling_ = false;
    const bool empty = folder == nullptr || folder->apps.empty();
    apps_->setVisible(!empty);
    noApps_->setVisible(folder != nullptr && empty);
    apps_->setCurrentRow(std::min(keep, apps_->count() - 1));
    const int row = apps_->currentRow();
    moveUp_->setEnabled(row > 0);
    moveDown_->setEnabled(row >= 0 && row + 1 < apps_->count());
    removeApp_->setEnabled(row >= 0);
    renderPreview();
}

void FoldersTab::filterPicker(const QString& text) {
    const QString needle = text.trimmed();
    for (int i = 0; i < picker_->count(); ++i) {
        QListWidgetItem* item = picker_->item(i);
        item->setHidden(!needle.isEmpty() && !item->text().contains(needle, Qt::CaseInsensitive) &&
                        !item->data(kIdRole).toString().contains(needle, Qt::CaseInsensitive));
    }
}

void FoldersTab::addChosenApps() {
    AppFolder* folder = current();
    if (folder == nullptr) {
        return;
    }
    bool added = false;
    for (const QListWidgetItem* item : picker_->selectedItems()) {
        AppEntry app{item->text(), item->data(kPathRole).toString(),
                     item->data(kIdRole).toString()};
        const bool present =
            std::any_of(folder->apps.begin(), folder->apps.end(),
                        [&](const AppEntry& a) { return a.reference() == app.reference(); });
        if (!present) {
            folder->apps.push_back(std::move(app));
            added = true;
        }
    }
    if (added) {
        fillApps();
        apps_->setCurrentRow(apps_->count() - 1);
        edited();
    }
}

void FoldersTab::moveApp(int by) {
    AppFolder* folder = current();
    const int row = apps_->currentRow();
    const int to = row + by;
    if (folder == nullptr || row < 0 || to < 0 || to >= static_cast<int>(folder->apps.size())) {
        return;
    }
    std::swap(folder->apps[static_cast<std::size_t>(row)],
              folder->apps[static_cast<std::size_t>(to)]);
    fillApps();
    apps_->setCurrentRow(to);
    edited();
}

void FoldersTab::removeApp() {
    AppFolder* folder = current();
    const int row = apps_->currentRow();
    if (folder == nullptr || row < 0 || row >= static_cast<int>(folder->apps.size())) {
        return;
    }
    folder->apps.erase(folder->apps.begin() + row);
    fillApps();
    edited();
}

void FoldersTab::takeAppOrder() {
    AppFolder* folder = current();
    if (folder == nullptr) {
        return;
    }
    std::vector<AppEntry> ordered;
    for (int i = 0; i < apps_->count(); ++i) {
        const QString ref = apps_->item(i)->data(kIdRole).toString();
        const auto it = std::find_if(folder->apps.begin(), folder->apps.end(),
                                     [&](const AppEntry& a) { return a.reference() == ref; });
        if (it != folder->apps.end()) {
            ordered.push_back(*it);
        }
    }
    if (ordered.size() == folder->apps.size()) {
        folder->apps = std::move(ordered);
        renderPreview();
        edited();
    }
}

void FoldersTab::newFolder() {
    AppFolder folder;
    folder.id = QUuid::createUuid();
    folder.name = tr("New Folder");
    list_.push_back(folder);
    fillFolders(folder.id);
    edited();
    name_->setFocus(Qt::OtherFocusReason);
    name_->selectAll();
}

void FoldersTab::confirmDelete() {
    const AppFolder* folder = current();
    if (folder == nullptr) {
        return;
    }
    auto* box = new QMessageBox(
        QMessageBox::Question, tr("Delete Folder"),
        tr("Delete the folder “%1”? Its apps stay installed. The folder leaves the Dock on the "
           "next Apply.")
            .arg(folder->name),
        QMessageBox::Cancel, this);
    box->setObjectName(QStringLiteral("confirmDeleteFolder"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* yes = box->addButton(tr("Delete"), QMessageBox::DestructiveRole);
    yes->setObjectName(QStringLiteral("confirmDelete"));
    box->setDefaultButton(QMessageBox::Cancel);
    connect(yes, &QPushButton::clicked, this, [this, id = folder->id] {
        std::erase_if(list_, [&](const AppFolder& f) { return f.id == id; });
        fillFolders(list_.empty() ? std::nullopt : std::optional<QUuid>(list_.front().id));
        edited();
    });
    box->open();
}

void FoldersTab::edited() {
    QString error;
    if (!dock_.store().save(list_, &error)) {
        showText(problems_, tr("Your folders couldn't be saved: %1").arg(error));
        return;
    }
    showText(problems_, {});
    showStatus(tr("Not in the Dock yet: Apply puts these changes there."));
}

void FoldersTab::showStatus(const QString& text) {
    showText(status_, text);
}

bool FoldersTab::isBusy() const {
    return job_.isRunning();
}

void FoldersTab::setBusy(bool busy) {
    // The list is read and saved by the work under way; edits now would be lost under it.
    for (QWidget* w : {static_cast<QWidget*>(folderList_), detail_, static_cast<QWidget*>(add_)}) {
        w->setEnabled(!busy);
    }
    apply_->setEnabled(!busy && !DockPreferences::unavailableReason());
    if (!busy) {
        showFolder();
    }
}

void FoldersTab::apply() {
    const DockFoldersOptions options{prefs_.dockFoldersHideGroupedApps(),
                                     prefs_.dockFoldersShowIndicators()};
    const bool started =
        job_.start([dock = dock_, list = list_, options](JobContext<double>&) -> Outcome {
            try {
                return {dock.apply(list, options), {}, {}};
            } catch (const DockPreferencesError& e) {
                return {std::nullopt, {}, e.message};
            }
        });
    if (started) {
        showStatus(tr("Applying…"));
        showText(problems_, {});
        setBusy(true);
    }
}

void FoldersTab::applyRemoval(const FolderLink& link) {
    const bool started = job_.start([dock = dock_, link](JobContext<double>&) -> Outcome {
        return {std::nullopt, dock.applyRemoval(link).message, {}};
    });
    if (!started) {
        showText(problems_, tr("Tarvik is still applying; open the link again when it's done."));
        return;
    }
    showText(problems_, {});
    setBusy(true);
}

void FoldersTab::finished(const Outcome& outcome) {
    if (outcome.report) {
        showStatus(reportText(*outcome.report));
        showText(problems_, outcome.report->problems.join(QLatin1Char('\n')));
        emit dockChanged();
    } else if (!outcome.error.isEmpty()) {
        showStatus({});
        showText(problems_, tr("The Dock wasn't changed: %1").arg(outcome.error));
    } else {
        reload(); // the link changed the saved list
        showStatus(outcome.sentence);
    }
    setBusy(false);
}

void FoldersTab::renderPreview() {
    const AppFolder* folder = current();
    if (folder == nullptr) {
        preview_->clear();
        return;
    }
    const int pixels = qRound(kPreviewSize * devicePixelRatioF());
    const bool started = previewJob_.start([folder = *folder, pixels](JobContext<double>&) {
        return FolderIconRenderer(folder).image(pixels);
    });
    if (!started) {
        previewAgain_ = true; // the folder changed while its icon was drawn: draw it again
    }
}

} // namespace tarvik
