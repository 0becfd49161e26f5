#include "app/dock/dividers_tab.h"

#include "app/dock/dock_widgets.h"
#include "app/shell/card.h"
#include "app/shell/empty_state.h"
#include "app/shell/quiet_label.h"
#include "app/shell/theme.h"
#include "core/sys/desktop_apps.h"
#include "core/text/counts.h"
#include "folder-helper/app_icon.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace tarvik {
namespace {

using dock_widgets::button;
using dock_widgets::showText;

constexpr int kRowRole = Qt::UserRole;

QString backupText(const DockBackup& backup) {
    return QStringLiteral("%1 — %2").arg(
        QLocale().toString(backup.taken.toLocalTime(), QLocale::ShortFormat),
        countOf(backup.tiles.size(), u"tile", u"tiles"));
}

} // namespace

DividersTab::DividersTab(DockFolders folders, QWidget* parent)
    : QWidget(parent), dock_(std::move(folders)), layout_(dock_.preferences(), dock_.paths()) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, space::m, 0, 0);
    layout->setSpacing(space::m);

    unavailable_ = new QLabel(this);
    unavailable_->setObjectName(QStringLiteral("dockUnavailable"));
    unavailable_->setWordWrap(true);
    setTextMeaning(unavailable_, Meaning::Watch);
    unavailable_->hide();
    layout->addWidget(unavailable_);

    auto* card = new Card(tr("Spaces between Dock apps"), this);
    card->body()->addWidget(quietLabel(
        tr("The Dock has no divider line inside its apps section, only blank spaces. GNOME's "
           "dash gives every tile the same width, so a Small Space is as wide as a Space "
           "there."),
        card));
    rows_ = new QListWidget(card);
    rows_->setObjectName(QStringLiteral("dockRows"));
    rows_->setAccessibleName(tr("The Dock's tiles, in order"));
    rows_->setIconSize(QSize(24, 24));
    rows_->setMinimumHeight(220);
    rows_->setMaximumHeight(360); // the Folders tab makes the page tall; the list needn't follow
    card->body()->addWidget(rows_);
    empty_ = new EmptyState("square.grid.3x3.fill",
                            QStringLiteral("<b>%1</b><br>%2")
                                .arg(DockLayout::emptyTitle().toHtmlEscaped(),
                                     DockLayout::emptyDetail().toHtmlEscaped()),
                            card);
    empty_->setObjectName(QStringLiteral("dockEmpty"));
    card->body()->addWidget(empty_, 1);

    auto* buttons = new QHBoxLayout();
    addSpace_ = button(tr("Add &Space"), QStringLiteral("addSpace"), card);
    addSmallSpace_ = button(tr("Add S&mall Space"), QStringLiteral("addSmallSpace"), card);
    remove_ = button(tr("&Remove"), QStringLiteral("removeSpace"), card);
    remove_->setToolTip(tr("Removes the chosen space; apps stay in the Dock"));
    apply_ = button(tr("&Apply"), QStringLiteral("applySpaces"), card);
    apply_->setDefault(true);
    reload_ = button(tr("Re&load"), QStringLiteral("reloadDock"), card);
    reload_->setToolTip(tr("Reads the Dock again and drops changes not yet applied"));
    buttons->addWidget(addSpace_);
    buttons->addWidget(addSmallSpace_);
    buttons->addWidget(remove_);
    buttons->addStretch(1);
    buttons->addWidget(reload_);
    buttons->addWidget(apply_);
    card->body()->addLayout(buttons);
    status_ = quietLabel(QString(), card);
    status_->setObjectName(QStringLiteral("spacesStatus"));
    status_->hide();
    card->body()->addWidget(status_);
    error_ = new QLabel(card);
    error_->setObjectName(QStringLiteral("spacesError"));
    error_->setWordWrap(true);
    setTextMeaning(error_, Meaning::Critical);
    error_->hide();
    card->body()->addWidget(error_);
    layout->addWidget(card);

    auto* backups = new Card(tr("Backups"), this, "arrow.clockwise");
    backups->body()->addWidget(quietLabel(
        tr("Tarvik backs up the Dock's list before every change it makes. Restoring one puts "
           "that list back, after backing up the current one."),
        backups));
    auto* restoreRow = new QHBoxLayout();
    restore_ = button(tr("Restore &Backup…"), QStringLiteral("restoreBackup"), backups);
    restoreRow->addWidget(restore_);
    restoreRow->addStretch(1);
    backups->body()->addLayout(restoreRow);
    layout->addWidget(backups);
    layout->addStretch(1);

    connect(addSpace_, &QPushButton::clicked, this, [this] { addSpacer(DockSpacer::Regular); });
    connect(addSmallSpace_, &QPushButton::clicked, this, [this] { addSpacer(DockSpacer::Small); });
    connect(remove_, &QPushButton::clicked, this, [this] {
        if (const auto row = layout_.selection(); row && layout_.removeSpacer(*row)) {
            layout_.select(std::nullopt);
            fill();
        }
    });
    connect(apply_, &QPushButton::clicked, this, [this] {
        if (layout_.apply()) {
            layout_.reload();
            fill();
            showText(status_, tr("The Dock was updated. Its previous list was backed up first."));
        } else {
            fill();
        }
    });
    connect(reload_, &QPushButton::clicked, this, [this] {
        layout_.reload();
        fill();
    });
    connect(restore_, &QPushButton::clicked, this, &DividersTab::chooseBackup);
    connect(rows_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
        layout_.select(item != nullptr ? std::optional<QUuid>(item->data(kRowRole).toUuid())
                                       : std::nullopt);
        remove_->setEnabled(available_ && selectionIsSpacer());
    });

    const auto why = DockPreferences::unavailableReason();
    available_ = !why;
    showText(unavailable_, why.value_or(QString()));
    layout_.reload();
    fill();
}

void DividersTab::reloadUnlessChanged() {
    if (!layout_.hasChanges()) {
        layout_.reload();
        fill();
    }
}

void DividersTab::fill() {
    const auto selected = layout_.selection();
    const QSignalBlocker block(rows_);
    rows_->clear();
    QListWidgetItem* current = nullptr;
    for (const DockLayout::Row& row : layout_.rows()) {
        auto* item = new QListWidgetItem(row.title, rows_);
        item->setData(kRowRole, row.id);
        if (row.spacer) {
            QFont italic = item->font();
            italic.setItalic(true);
            item->setFont(italic);
        } else {
            const auto app = DesktopApps::find(row.tile);
            item->setIcon(appIcon(app ? app->icon : QString(), 32));
            item->setToolTip(row.tile);
        }
        if (selected && row.id == *selected) {
            current = item;
        }
    }
    rows_->setCurrentItem(current);
    layout_.select(current != nullptr ? selected : std::nullopt);
    const bool empty = layout_.rows().empty();
    rows_->setVisible(!empty || !available_);
    empty_->setVisible(empty && available_);
    addSpace_->setEnabled(available_ && !empty);
    addSmallSpace_->setEnabled(available_ && !empty);
    remove_->setEnabled(available_ && selectionIsSpacer());
    apply_->setEnabled(available_ && layout_.hasChanges());
    reload_->setEnabled(available_);
    restore_->setEnabled(available_);
    showText(error_, layout_.errorMessage().value_or(QString()));
    showText(status_, layout_.hasChanges()
                          ? tr("Not in the Dock yet: Apply writes these spaces there.")
                          : QString());
}

bool DividersTab::selectionIsSpacer() const {
    const auto selected = layout_.selection();
    const auto& rows = layout_.rows();
    return selected && std::any_of(rows.begin(), rows.end(), [&](const DockLayout::Row& r) {
               return r.id == *selected && r.spacer.has_value();
           });
}

void DividersTab::addSpacer(DockSpacer kind) {
    const QUuid row = layout_.addSpacer(kind, layout_.selection());
    layout_.select(row);
    fill();
}

void DividersTab::chooseBackup() {
    const std::vector<DockBackup> backups = dock_.preferences().backups();
    auto* dialog = new QDialog(this);
    dialog->setObjectName(QStringLiteral("restoreBackupDialog"));
    dialog->setWindowTitle(tr("Restore Backup"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    auto* v = new QVBoxLayout(dialog);
    v->addWidget(quietLabel(backups.empty()
                                ? tr("There are no backups yet: Tarvik takes one before it "
                                     "changes the Dock.")
                                : tr("The Dock's apps are replaced by the chosen list, newest "
                                     "first. The current list is backed up before."),
                            dialog));
    auto* list = new QListWidget(dialog);
    list->setObjectName(QStringLiteral("backupList"));
    list->setAccessibleName(tr("Backups, newest first"));
    for (std::size_t i = 0; i < backups.size(); ++i) {
        auto* item = new QListWidgetItem(backupText(backups[i]), list);
        item->setData(kRowRole, static_cast<int>(i));
        item->setToolTip(backups[i].tiles.join(QLatin1Char('\n')));
    }
    list->setCurrentRow(backups.empty() ? -1 : 0);
    list->setVisible(!backups.empty());
    v->addWidget(list);
    auto* box = new QDialogButtonBox(QDialogButtonBox::Cancel, dialog);
    QPushButton* restore = box->addButton(tr("Restore"), QDialogButtonBox::AcceptRole);
    restore->setObjectName(QStringLiteral("confirmRestore"));
    restore->setEnabled(!backups.empty());
    v->addWidget(box);
    connect(box, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    connect(box, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    connect(dialog, &QDialog::accepted, this, [this, list, backups] {
        const int row = list->currentRow();
        if (row < 0 || row >= static_cast<int>(backups.size())) {
            return;
        }
        try {
            dock_.restore(backups[static_cast<std::size_t>(row)]);
            layout_.reload();
            fill();
            showText(status_, tr("The backup from %1 is back in the Dock.")
                                  .arg(QLocale().toString(
                                      backups[static_cast<std::size_t>(row)].taken.toLocalTime(),
                                      QLocale::ShortFormat)));
        } catch (const DockPreferencesError& e) {
            showText(error_, tr("The backup wasn't restored: %1").arg(e.message));
        }
    });
    dialog->open();
}

} // namespace tarvik
