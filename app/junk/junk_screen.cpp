#include "app/junk/junk_screen.h"

#include "app/cleanup/cleanup_screen.h"
#include "app/junk/junk_model.h"
#include "app/shell/section_icons.h"
#include "core/text/metric_format.h"
#include "core/text/path_display.h"
#include "core/text/qt_text.h"

#include <QHeaderView>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

constexpr int kCategoryRole = Qt::UserRole + 1;
constexpr int kItemRole = Qt::UserRole + 2;
constexpr int kFoldRole = Qt::UserRole + 3;

} // namespace

JunkScreen::JunkScreen(JunkModel& model, QString home, QWidget* parent)
    : QWidget(parent), model_(model), home_(std::move(home)) {
    frame_ = new CleanupScreen(model_,
                               {QStringLiteral("System Junk"), AppSection::SystemJunk,
                                QStringLiteral("item"), QStringLiteral("items"), tr("Clean"),
                                tr("Clean System Junk"), tr("Cleaning…"),
                                tr("Scan cancelled; these are the categories looked at before it "
                                   "stopped.")},
                               this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(frame_);
    frame_->setProgressText([](const QString&, qint64 categories, qint64 total) {
        return tr("Scanning… %1 of %2 categories").arg(categories).arg(total);
    });

    tree_ = new QTreeWidget(frame_);
    tree_->setObjectName(QStringLiteral("junkTree"));
    tree_->setColumnCount(2);
    tree_->setHeaderLabels({tr("Name"), tr("Size")});
    tree_->header()->setStretchLastSection(false);
    tree_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    tree_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    tree_->setAccessibleName(tr("Junk found, by category"));
    tree_->setIconSize(QSize(18, 18));
    tree_->setSelectionMode(QAbstractItemView::NoSelection); // ticks choose, nothing else does
    tree_->setMinimumHeight(280);
    frame_->setView(tree_);
    frame_->setSummary(tr("Scan to find caches, logs and other junk in your home folder."));

    connect(frame_, &CleanupScreen::scanRequested, &model_, &JunkModel::scan);
    connect(&model_, &JunkModel::resultsChanged, this, &JunkScreen::rebuild);
    connect(&model_, &JunkModel::selectionChanged, this, &JunkScreen::refreshChecks);
    connect(&model_, &JunkModel::scanFinished, this, &JunkScreen::refreshSummary);
    connect(tree_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (updating_ || column != 0) {
            return;
        }
        const bool on = item->checkState(0) == Qt::Checked;
        if (item->data(0, kItemRole).isValid()) {
            model_.setItemSelected(item->data(0, kItemRole).toString(), on);
        } else {
            model_.setCategorySelected(
                static_cast<JunkCategory>(item->data(0, kCategoryRole).toInt()), on);
        }
    });
    rebuild();
}

void JunkScreen::rebuild() {
    updating_ = true;
    QSet<int> expanded;
    bool foldOpen = false;
    for (int i = 0; i < tree_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* top = tree_->topLevelItem(i);
        if (top->data(0, kFoldRole).toBool()) {
            foldOpen = top->isExpanded();
        } else if (top->isExpanded()) {
            expanded.insert(top->data(0, kCategoryRole).toInt());
        }
    }
    tree_->clear();
    // Categories that only a Mac fills stay listed, folded out of the way while they are empty.
    QTreeWidgetItem* fold = nullptr;
    for (const auto& r : model_.results()) {
        const auto& i = info(r.category);
        QTreeWidgetItem* row = nullptr;
        if (r.items.empty() && !existsOnLinux(r.category)) {
            if (fold == nullptr) {
                fold = new QTreeWidgetItem();
                fold->setText(0, tr("Not used on Linux"));
                fold->setIcon(0, symbolIcon("info.circle"));
                fold->setToolTip(0, tr("Folders that apps on a Mac fill; a home copied from one "
                                       "may still have them."));
                fold->setData(0, kFoldRole, true);
                fold->setFlags(Qt::ItemIsEnabled);
            }
            row = new QTreeWidgetItem(fold);
        } else {
            row = new QTreeWidgetItem(tree_);
        }
        row->setText(0, QStringLiteral("%1 (%2)").arg(
                            toQString(i.title), frame_->count(static_cast<int>(r.items.size()))));
        row->setIcon(0, symbolIcon(i.symbol));
        row->setToolTip(0, toQString(i.summary));
        row->setText(1, MetricFormat::bytes(r.totalSize));
        row->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        row->setData(0, kCategoryRole, static_cast<int>(r.category));
        // An empty category keeps its (disabled) box, so every row's title starts in one column.
        row->setFlags(r.items.empty() ? Qt::ItemIsUserCheckable
                                      : Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        row->setCheckState(0, Qt::Unchecked);
        for (const auto& item : r.items) {
            auto* child = new QTreeWidgetItem(row);
            child->setText(0, PathDisplay::abbreviate(item.path, home_));
            child->setText(1, MetricFormat::bytes(item.size));
            child->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
            child->setData(0, kItemRole, item.id());
            child->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        }
        row->setExpanded(expanded.contains(static_cast<int>(r.category)));
    }
    if (fold != nullptr) {
        fold->setText(0, QStringLiteral("%1 (%2)").arg(fold->text(0)).arg(fold->childCount()));
        tree_->addTopLevelItem(fold);
        fold->setExpanded(foldOpen);
    }
    updating_ = false;
    refreshChecks();
}

void JunkScreen::refreshChecks() {
    updating_ = true;
    for (int i = 0; i < tree_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = tree_->topLevelItem(i);
        if (row->data(0, kFoldRole).toBool()) {
            continue; // its categories are empty: nothing to tick
        }
        int on = 0;
        for (int c = 0; c < row->childCount(); ++c) {
            QTreeWidgetItem* child = row->child(c);
            const bool selected = model_.isSelected(child->data(0, kItemRole).toString());
            child->setCheckState(0, selected ? Qt::Checked : Qt::Unchecked);
            on += selected ? 1 : 0;
        }
        if (row->childCount() > 0) {
            row->setCheckState(0, on == 0                   ? Qt::Unchecked
                                  : on == row->childCount() ? Qt::Checked
                                                            : Qt::PartiallyChecked);
        }
    }
    updating_ = false;
    refreshSummary();
}

void JunkScreen::refreshSummary() {
    if (!model_.isScanning() && !model_.results().empty()) {
        frame_->setSummary(tr("%1 selected (%2).")
                               .arg(MetricFormat::bytes(model_.selectedSize()),
                                    frame_->count(model_.selectedCount())));
    }
}

} // namespace tarvik
