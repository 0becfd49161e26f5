#include "app/files/duplicates_screen.h"

#include "app/files/duplicates_model.h"
#include "app/files/file_texts.h"
#include "app/files/reveal_in_file_manager.h"
#include "app/files/search_controls.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "core/text/metric_format.h"
#include "core/text/path_display.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

enum Column { FileColumn, ModifiedColumn, SizeColumn, NoteColumn };
constexpr int kGroupRole = Qt::UserRole + 1;
constexpr int kPathRole = Qt::UserRole + 2;

QString filesText(int n) {
    return FileTexts::count(n, QStringLiteral("file"), QStringLiteral("files"));
}

} // namespace

DuplicatesScreen::DuplicatesScreen(DuplicatesModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    confirm_ = [this](const QString& question, const QString& detail) {
        QMessageBox box(QMessageBox::Warning, tr("Remove Duplicates"), question,
                        QMessageBox::Cancel, this);
        box.setInformativeText(detail);
        auto* go = box.addButton(tr("Remove"), QMessageBox::DestructiveRole);
        box.setDefaultButton(QMessageBox::Cancel);
        box.exec();
        return box.clickedButton() == go;
    };
    reveal_ = revealInFileManager;

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(new ScreenHeader(QStringLiteral("Duplicates"),
                                       sectionSubtitle(AppSection::Duplicates), this));
    controls_ = new SearchControls(kDuplicateThresholds, 1'000'000, {}, this);
    layout->addWidget(controls_);

    auto* bar = new QHBoxLayout();
    total_ = new QLabel(tr("Scan to find files with the same contents."), this);
    total_->setObjectName(QStringLiteral("total"));
    total_->setWordWrap(true);
    selectCopies_ = new QPushButton(tr("Select &Copies"), this);
    selectCopies_->setObjectName(QStringLiteral("selectCopies"));
    selectCopies_->setToolTip(tr("Choose every copy but the original of each group."));
    selectNone_ = new QPushButton(tr("Select &None"), this);
    selectNone_->setObjectName(QStringLiteral("selectNone"));
    revealButton_ = new QPushButton(tr("Re&veal in File Manager"), this);
    revealButton_->setObjectName(QStringLiteral("reveal"));
    remove_ = new QPushButton(tr("&Remove Selected…"), this);
    remove_->setObjectName(QStringLiteral("removeSelected"));
    bar->addWidget(selectCopies_);
    bar->addWidget(selectNone_);
    bar->addStretch(1);
    bar->addWidget(revealButton_);
    bar->addWidget(remove_);
    layout->addLayout(bar);

    tree_ = new QTreeWidget(this);
    tree_->setObjectName(QStringLiteral("duplicatesTree"));
    tree_->setAccessibleName(tr("Groups of identical files"));
    tree_->setColumnCount(4);
    tree_->setHeaderLabels({tr("File"), tr("Modified"), tr("Size"), tr("Note")});
    tree_->header()->setStretchLastSection(true);
    tree_->setColumnWidth(FileColumn, 300);
    tree_->setColumnWidth(ModifiedColumn, 100);
    tree_->setColumnWidth(SizeColumn, 80);
    tree_->setMinimumHeight(280);
    layout->addWidget(tree_, 1);
    layout->addWidget(total_);

    hint_ = new QLabel(this);
    hint_->setObjectName(QStringLiteral("hint"));
    hint_->setWordWrap(true);
    hint_->hide();
    layout->addWidget(hint_);
    report_ = new QLabel(this);
    report_->setObjectName(QStringLiteral("report"));
    report_->setWordWrap(true);
    report_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    report_->hide();
    layout->addWidget(report_);

    connect(controls_, &SearchControls::scanClicked, this, &DuplicatesScreen::startScan);
    connect(controls_, &SearchControls::cancelClicked, &model_, &DuplicatesModel::cancel);
    connect(selectCopies_, &QPushButton::clicked, &model_, &DuplicatesModel::selectDefault);
    connect(selectNone_, &QPushButton::clicked, &model_, &DuplicatesModel::selectNone);
    connect(revealButton_, &QPushButton::clicked, this, &DuplicatesScreen::revealCurrent);
    connect(remove_, &QPushButton::clicked, this, &DuplicatesScreen::requestRemoval);
    connect(tree_, &QTreeWidget::currentItemChanged, this, &DuplicatesScreen::refreshActions);
    connect(tree_, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        if (item->data(0, kPathRole).isValid()) {
            revealCurrent();
        }
    });
    connect(tree_, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) {
        collapsed_.insert(item->data(0, kGroupRole).toString());
    });
    connect(tree_, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
        collapsed_.remove(item->data(0, kGroupRole).toString());
    });
    connect(tree_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (updating_ || column != FileColumn) {
            return;
        }
        const bool on = item->checkState(FileColumn) == Qt::Checked;
        hint_->hide();
        if (item->data(0, kPathRole).isValid()) {
            model_.setSelected(item->data(0, kPathRole).toString(), on);
        } else {
            model_.setGroupSelected(item->data(0, kGroupRole).toString(), on);
        }
    });

    connect(&model_, &DuplicatesModel::scanStarted, this, [this] {
        report_->hide();
        hint_->hide();
        controls_->setStatus(tr("Looking for files…"));
        refreshActions();
    });
    connect(&model_, &DuplicatesModel::scanProgress, this, [this](const QString& phase, qint64 n) {
        const QString count = QLocale().toString(n);
        controls_->setStatus(phase == QLatin1String("Comparing files")
                                 ? tr("Comparing files… %1 compared").arg(count)
                                 : tr("%1… %2 entries visited").arg(phase, count));
    });
    connect(&model_, &DuplicatesModel::scanFinished, this, [this] {
        controls_->setStatus(model_.wasCancelled() ? tr("Scan cancelled.") : QString());
        refreshActions();
    });
    connect(&model_, &DuplicatesModel::groupsChanged, this, &DuplicatesScreen::rebuild);
    connect(&model_, &DuplicatesModel::selectionChanged, this, &DuplicatesScreen::refreshChecks);
    connect(&model_, &DuplicatesModel::selectionRefused, this, [this] {
        hint_->setText(tr("One file of each group always stays. To remove this one, first "
                          "uncheck another file of its group."));
        hint_->show();
        refreshChecks();
    });
    connect(&model_, &DuplicatesModel::removeProgress, this,
            [this](double f) { controls_->setStatus(tr("Removing copies…"), f); });
    connect(&model_, &DuplicatesModel::removeFinished, this, [this] {
        controls_->setStatus(QString());
        report_->setText(FileTexts::reportHtml(*model_.lastReport(), model_.home()));
        report_->show();
        refreshActions();
    });
    rebuild();
}

QString DuplicatesScreen::totalText() const {
    return total_->text();
}

QString DuplicatesScreen::hintText() const {
    return hint_->isHidden() ? QString() : hint_->text();
}

QString DuplicatesScreen::reportText() const {
    return report_->isHidden() ? QString() : report_->text();
}

void DuplicatesScreen::startScan() {
    model_.scan(controls_->options());
}

void DuplicatesScreen::rebuild() {
    updating_ = true;
    tree_->clear();
    const QString home = model_.home();
    for (const auto& g : model_.groups()) {
        auto* row = new QTreeWidgetItem(tree_);
        const QString name = QFileInfo(g.files.front().path).fileName();
        row->setText(FileColumn, QStringLiteral("%1 (%2)").arg(
                                     name, filesText(static_cast<int>(g.files.size()))));
        row->setText(SizeColumn, MetricFormat::bytes(g.fileSize));
        row->setToolTip(SizeColumn, tr("Each file's length"));
        row->setText(NoteColumn, tr("%1 to gain").arg(MetricFormat::bytes(g.wastedBytes())));
        row->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setData(0, kGroupRole, g.id);
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        QFont bold = row->font(FileColumn);
        bold.setBold(true);
        row->setFont(FileColumn, bold);
        for (std::size_t i = 0; i < g.files.size(); ++i) {
            const CleanableItem& f = g.files[i];
            auto* child = new QTreeWidgetItem(row);
            child->setText(FileColumn, PathDisplay::abbreviate(f.path, home));
            child->setToolTip(FileColumn, f.path);
            child->setText(ModifiedColumn, FileTexts::date(f.modified));
            child->setText(SizeColumn, MetricFormat::bytes(f.size));
            child->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
            child->setData(0, kPathRole, f.path);
            child->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        }
        row->setExpanded(!collapsed_.contains(g.id));
    }
    updating_ = false;
    refreshChecks();
}

void DuplicatesScreen::refreshChecks() {
    updating_ = true;
    for (int r = 0; r < tree_->topLevelItemCount(); ++r) {
        QTreeWidgetItem* row = tree_->topLevelItem(r);
        int on = 0;
        for (int c = 0; c < row->childCount(); ++c) {
            QTreeWidgetItem* child = row->child(c);
            const bool selected = model_.isSelected(child->data(0, kPathRole).toString());
            child->setCheckState(FileColumn, selected ? Qt::Checked : Qt::Unchecked);
            on += selected ? 1 : 0;
            // The note follows the choice: an original the user chose to remove is not kept.
            const auto& g = model_.groups()[static_cast<std::size_t>(r)];
            const auto& file = g.files[static_cast<std::size_t>(c)];
            QStringList notes;
            if (c == 0) {
                notes << (selected ? tr("Original") : tr("Original — kept"));
            }
            if (file.detail) {
                // The other names are full paths; inside the home they read as elsewhere.
                notes << QString(*file.detail)
                             .replace(model_.home() + QLatin1Char('/'), QStringLiteral("~/"));
            }
            child->setText(NoteColumn, notes.join(QStringLiteral(". ")));
            child->setToolTip(NoteColumn, notes.join(QLatin1Char('\n')));
        }
        // Checked: as many as may go (all but one); the group's box can't ask for more.
        row->setCheckState(FileColumn, on == 0                       ? Qt::Unchecked
                                       : on == row->childCount() - 1 ? Qt::Checked
                                                                     : Qt::PartiallyChecked);
    }
    updating_ = false;
    refreshActions();
}

void DuplicatesScreen::refreshActions() {
    const bool busy = model_.isBusy();
    controls_->setBusy(busy);
    const bool any = !model_.groups().empty();
    selectCopies_->setEnabled(!busy && any);
    selectNone_->setEnabled(!busy && model_.selectedCount() > 0);
    const QTreeWidgetItem* current = tree_->currentItem();
    revealButton_->setEnabled(current != nullptr && current->data(0, kPathRole).isValid());
    remove_->setEnabled(!busy && model_.selectedCount() > 0);
    if (model_.isScanning()) {
        total_->setText(tr("Groups of identical files appear here when the comparison ends."));
        return;
    }
    if (!model_.hasScanned()) {
        return;
    }
    if (!any) {
        total_->setText(model_.wasCancelled()
                            ? tr("Scan cancelled before the comparison ended.")
                            : tr("No duplicates larger than %1 found.")
                                  .arg(FileTexts::preset(model_.lastOptions().minimumSize)));
        return;
    }
    const int groups = static_cast<int>(model_.groups().size());
    QString text =
        tr("%1, %2 to gain.")
            .arg(FileTexts::count(groups, QStringLiteral("group"), QStringLiteral("groups")),
                 MetricFormat::bytes(model_.totalWaste()));
    text += QLatin1Char(' ') + (model_.selectedCount() == 0
                                    ? tr("Check the copies you want to remove.")
                                    : tr("%1 selected (%2).")
                                          .arg(filesText(model_.selectedCount()),
                                               MetricFormat::bytes(model_.selectedSize())));
    total_->setText(text);
}

void DuplicatesScreen::revealCurrent() {
    if (const QTreeWidgetItem* current = tree_->currentItem()) {
        if (current->data(0, kPathRole).isValid()) {
            reveal_(current->data(0, kPathRole).toString());
        }
    }
}

void DuplicatesScreen::requestRemoval() {
    const int count = model_.selectedCount();
    if (count == 0 || model_.isBusy()) {
        return;
    }
    const QString question =
        tr("Remove %1 (%2)?").arg(filesText(count), MetricFormat::bytes(model_.selectedSize()));
    const QString detail = FileTexts::removalDetail(model_.removalMode()) + QLatin1Char(' ') +
                           tr("At least one file of each group is kept.");
    if (confirm_(question, detail)) {
        report_->hide();
        hint_->hide();
        model_.removeSelected();
        controls_->setStatus(tr("Removing copies…"), 0.0);
        refreshActions();
    }
}

} // namespace tarvik
