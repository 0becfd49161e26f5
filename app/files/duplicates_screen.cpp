#include "app/files/duplicates_screen.h"

#include "app/cleanup/cleanup_screen.h"
#include "app/cleanup/file_texts.h"
#include "app/files/duplicates_model.h"
#include "app/files/reveal_in_file_manager.h"
#include "app/files/search_controls.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"
#include "core/text/path_display.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

enum Column { FileColumn, ModifiedColumn, SizeColumn, NoteColumn };
constexpr int kGroupRole = Qt::UserRole + 1;
constexpr int kPathRole = Qt::UserRole + 2;

} // namespace

DuplicatesScreen::DuplicatesScreen(DuplicatesModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    reveal_ = revealInFileManager;
    frame_ = new CleanupScreen(
        model_,
        {QStringLiteral("Duplicates"), AppSection::Duplicates, QStringLiteral("file"),
         QStringLiteral("files"), tr("Remove"), tr("Remove Duplicates"), tr("Removing copies…"),
         tr("Scan cancelled."), tr("At least one file of each group is kept.")},
        this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(frame_);

    controls_ = new SearchControls(kDuplicateThresholds, 1'000'000, {}, frame_);
    frame_->setControls(controls_);
    frame_->setProgressText([](const QString& phase, qint64 n, qint64 total) {
        if (phase != QLatin1String("Comparing files")) {
            return tr("%1… %2 visited").arg(phase, countOf(n, u"entry", u"entries"));
        }
        return total > 0 ? tr("Comparing files… %1 of %2")
                               .arg(QLocale().toString(n), countOf(total, u"file", u"files"))
                         : tr("Comparing files… %1 compared").arg(QLocale().toString(n));
    });

    selectCopies_ = new QPushButton(tr("Select &Copies"), frame_);
    selectCopies_->setObjectName(QStringLiteral("selectCopies"));
    selectCopies_->setToolTip(tr("Choose every copy but the original of each group."));
    selectNone_ = new QPushButton(tr("Select &None"), frame_);
    selectNone_->setObjectName(QStringLiteral("selectNone"));
    revealButton_ = new QPushButton(tr("Re&veal in File Manager"), frame_);
    revealButton_->setObjectName(QStringLiteral("reveal"));
    frame_->addAction(selectCopies_);
    frame_->addAction(selectNone_);
    frame_->addTrailingAction(revealButton_);

    tree_ = new QTreeWidget(frame_);
    tree_->setObjectName(QStringLiteral("duplicatesTree"));
    tree_->setAccessibleName(tr("Groups of identical files"));
    tree_->setColumnCount(4);
    tree_->setHeaderLabels({tr("File"), tr("Modified"), tr("Size"), tr("Note")});
    tree_->header()->setStretchLastSection(true);
    tree_->setColumnWidth(FileColumn, 300);
    tree_->setColumnWidth(ModifiedColumn, 100);
    tree_->setColumnWidth(SizeColumn, 80);
    tree_->setMinimumHeight(280);
    // Ticks choose what goes; the current row (for Reveal) shows by its focus frame only.
    tree_->setSelectionMode(QAbstractItemView::NoSelection);
    frame_->setView(tree_);
    frame_->setSummary(tr("Scan to find files with the same contents."));

    connect(frame_, &CleanupScreen::scanRequested, this, &DuplicatesScreen::startScan);
    connect(selectCopies_, &QPushButton::clicked, &model_, &DuplicatesModel::selectDefault);
    connect(selectNone_, &QPushButton::clicked, &model_, &DuplicatesModel::selectNone);
    connect(revealButton_, &QPushButton::clicked, this, &DuplicatesScreen::revealCurrent);
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
        frame_->hideHint();
        if (item->data(0, kPathRole).isValid()) {
            model_.setSelected(item->data(0, kPathRole).toString(), on);
        } else {
            model_.setGroupSelected(item->data(0, kGroupRole).toString(), on);
        }
    });

    connect(&model_, &DuplicatesModel::scanStarted, this, &DuplicatesScreen::refreshActions);
    connect(&model_, &DuplicatesModel::scanFinished, this, &DuplicatesScreen::refreshActions);
    connect(&model_, &DuplicatesModel::groupsChanged, this, &DuplicatesScreen::rebuild);
    connect(&model_, &DuplicatesModel::selectionChanged, this, &DuplicatesScreen::refreshChecks);
    connect(&model_, &DuplicatesModel::selectionRefused, this, [this] {
        frame_->showHint(tr("One file of each group always stays. To remove this one, first "
                            "uncheck another file of its group."));
        refreshChecks();
    });
    connect(&model_, &DuplicatesModel::removeFinished, this, &DuplicatesScreen::refreshActions);
    rebuild();
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
                                     name, frame_->count(static_cast<int>(g.files.size()))));
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
    const bool any = !model_.groups().empty();
    selectCopies_->setEnabled(!busy && any);
    selectNone_->setEnabled(!busy && model_.selectedCount() > 0);
    const QTreeWidgetItem* current = tree_->currentItem();
    revealButton_->setEnabled(current != nullptr && current->data(0, kPathRole).isValid());
    if (model_.isScanning()) {
        frame_->setSummary(tr("Groups of identical files appear here when the comparison ends."));
        return;
    }
    if (!model_.hasScanned()) {
        return;
    }
    if (!any) {
        frame_->setSummary(model_.wasCancelled()
                               ? tr("Scan cancelled before the comparison ended.")
                               : tr("No duplicates larger than %1 found.")
                                     .arg(FileTexts::preset(model_.lastOptions().minimumSize)));
        return;
    }
    const int groups = static_cast<int>(model_.groups().size());
    QString text =
        tr("%1, %2 to gain.")
            .arg(countOf(groups, u"group", u"groups"), MetricFormat::bytes(model_.totalWaste()));
    text += QLatin1Char(' ') + (model_.selectedCount() == 0
                                    ? tr("Check the copies you want to remove.")
                                    : tr("%1 selected (%2).")
                                          .arg(frame_->count(model_.selectedCount()),
                                               MetricFormat::bytes(model_.selectedSize())));
    frame_->setSummary(text);
}

void DuplicatesScreen::revealCurrent() {
    if (const QTreeWidgetItem* current = tree_->currentItem()) {
        if (current->data(0, kPathRole).isValid()) {
            reveal_(current->data(0, kPathRole).toString());
        }
    }
}

} // namespace tarvik
