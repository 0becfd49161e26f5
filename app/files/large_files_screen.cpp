#include "app/files/large_files_screen.h"

#include "app/cleanup/cleanup_screen.h"
#include "app/cleanup/file_texts.h"
#include "app/files/large_files_model.h"
#include "app/files/large_files_table.h"
#include "app/files/reveal_in_file_manager.h"
#include "app/files/search_controls.h"
#include "core/text/metric_format.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace tarvik {
namespace {

struct SortChoice {
    const char* title;
    int column;
    Qt::SortOrder order;
};

// Every column in both directions, so whatever header the user clicks, the picker says it.
constexpr std::array<SortChoice, 8> kSortChoices = {{
    {"Largest first", LargeFilesTable::Size, Qt::DescendingOrder},
    {"Smallest first", LargeFilesTable::Size, Qt::AscendingOrder},
    {"Oldest first", LargeFilesTable::Modified, Qt::AscendingOrder},
    {"Newest first", LargeFilesTable::Modified, Qt::DescendingOrder},
    {"Name, A to Z", LargeFilesTable::Name, Qt::AscendingOrder},
    {"Name, Z to A", LargeFilesTable::Name, Qt::DescendingOrder},
    {"Folder, A to Z", LargeFilesTable::Folder, Qt::AscendingOrder},
    {"Folder, Z to A", LargeFilesTable::Folder, Qt::DescendingOrder},
}};

} // namespace

LargeFilesScreen::LargeFilesScreen(LargeFilesModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    reveal_ = revealInFileManager;
    frame_ = new CleanupScreen(model_,
                               {QStringLiteral("Large & Old Files"), AppSection::LargeFiles,
                                QStringLiteral("file"), QStringLiteral("files"), tr("Remove"),
                                tr("Remove Files"), tr("Removing files…"),
                                tr("Scan cancelled; these are the files found before it stopped.")},
                               this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(frame_);

    controls_ = new SearchControls(kSizeThresholds, 100'000'000, kAgeFilters, frame_);
    frame_->setControls(controls_);

    kinds_ = new QComboBox(frame_);
    kinds_->setObjectName(QStringLiteral("kindPicker"));
    kinds_->setAccessibleName(tr("Kind of file shown"));
    kinds_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    auto* kindLabel = new QLabel(tr("Sho&w"), frame_);
    kindLabel->setBuddy(kinds_);
    sort_ = new QComboBox(frame_);
    sort_->setObjectName(QStringLiteral("sortPicker"));
    sort_->setAccessibleName(tr("Sort order"));
    for (const auto& c : kSortChoices) {
        sort_->addItem(tr(c.title));
    }
    auto* sortLabel = new QLabel(tr("Sort &by"), frame_);
    sortLabel->setBuddy(sort_);
    revealButton_ = new QPushButton(tr("Re&veal in File Manager"), frame_);
    revealButton_->setObjectName(QStringLiteral("reveal"));
    frame_->addAction(kindLabel);
    frame_->addAction(kinds_);
    frame_->addAction(sortLabel);
    frame_->addAction(sort_);
    frame_->addTrailingAction(revealButton_);

    table_ = new LargeFilesTable(model_, this);
    filter_ = new KindFilter(this);
    filter_->setSourceModel(table_);
    view_ = new QTreeView(frame_);
    view_->setObjectName(QStringLiteral("largeFilesView"));
    view_->setAccessibleName(tr("Large files found"));
    view_->setModel(filter_);
    view_->setRootIsDecorated(false);
    view_->setUniformRowHeights(true);
    view_->setAlternatingRowColors(true);
    view_->setSortingEnabled(true);
    // What is removed is what is ticked: no row is highlighted as if it were chosen too. The
    // current row (for Reveal, and Space to tick it) shows by its focus frame only.
    view_->setSelectionMode(QAbstractItemView::NoSelection);
    view_->header()->setStretchLastSection(true);
    view_->header()->setSectionResizeMode(LargeFilesTable::Name, QHeaderView::Interactive);
    view_->setColumnWidth(LargeFilesTable::Name, 280);
    view_->setColumnWidth(LargeFilesTable::Size, 90);
    view_->setColumnWidth(LargeFilesTable::Modified, 100);
    view_->sortByColumn(LargeFilesTable::Size, Qt::DescendingOrder);
    view_->setMinimumHeight(260);
    frame_->setView(view_);
    frame_->setSummary(tr("Choose a size and an age, then scan your home folder."));

    connect(frame_, &CleanupScreen::scanRequested, this, &LargeFilesScreen::startScan);
    connect(revealButton_, &QPushButton::clicked, this, &LargeFilesScreen::revealCurrent);
    connect(view_, &QTreeView::activated, this, &LargeFilesScreen::revealCurrent);
    connect(kinds_, &QComboBox::currentIndexChanged, this, [this] {
        const int k = kinds_->currentData().toInt();
        filter_->setKind(k < 0 ? std::nullopt : std::optional(static_cast<FileKind>(k)));
        refresh();
    });
    connect(sort_, &QComboBox::currentIndexChanged, this, [this](int i) {
        if (i >= 0) {
            const auto& c = kSortChoices[static_cast<std::size_t>(i)];
            view_->sortByColumn(c.column, c.order);
        }
    });
    // A click on a header sorts too; the picker follows it.
    connect(view_->header(), &QHeaderView::sortIndicatorChanged, this,
            [this](int column, Qt::SortOrder order) {
                for (std::size_t i = 0; i < kSortChoices.size(); ++i) {
                    if (kSortChoices[i].column == column && kSortChoices[i].order == order) {
                        const QSignalBlocker block(sort_);
                        sort_->setCurrentIndex(static_cast<int>(i));
                    }
                }
            });
    connect(view_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &LargeFilesScreen::refresh);
    connect(&model_, &LargeFilesModel::scanStarted, this, &LargeFilesScreen::refresh);
    connect(&model_, &LargeFilesModel::scanFinished, this, &LargeFilesScreen::refresh);
    connect(&model_, &LargeFilesModel::resultsChanged, this, &LargeFilesScreen::rebuildKinds);
    connect(&model_, &LargeFilesModel::selectionChanged, this, &LargeFilesScreen::refresh);
    connect(&model_, &LargeFilesModel::removeFinished, this, &LargeFilesScreen::refresh);
    rebuildKinds();
}

void LargeFilesScreen::startScan() {
    LargeFileScanner::Options options;
    static_cast<FileSearchOptions&>(options) = controls_->options();
    if (const int days = controls_->olderThanDays(); days > 0) {
        options.olderThanDays = days;
    }
    model_.scan(options);
}

void LargeFilesScreen::rebuildKinds() {
    // The picker keeps the kind it showed as long as some file of that kind is left.
    const int shown = kinds_->currentIndex() >= 0 ? kinds_->currentData().toInt() : -1;
    const QSignalBlocker block(kinds_);
    kinds_->clear();
    kinds_->addItem(tr("All kinds (%1)").arg(model_.results().size()), -1);
    for (FileKind k : kAllFileKinds) {
        if (const int n = model_.count(k); n > 0) {
            kinds_->addItem(QStringLiteral("%1 (%2)").arg(title(k)).arg(n), static_cast<int>(k));
        }
    }
    const int index = kinds_->findData(shown);
    kinds_->setCurrentIndex(std::max(0, index));
    filter_->setKind(index > 0 ? std::optional(static_cast<FileKind>(shown)) : std::nullopt);
    refresh();
}

void LargeFilesScreen::refresh() {
    const bool busy = model_.isBusy();
    const bool any = !model_.results().empty();
    kinds_->setEnabled(!busy && any);
    sort_->setEnabled(any);
    revealButton_->setEnabled(view_->currentIndex().isValid());
    if (model_.isScanning()) {
        frame_->setSummary(tr("The files appear here when the scan ends."));
        return;
    }
    if (!model_.hasScanned()) {
        return;
    }
    if (!any) {
        frame_->setSummary(
            tr("No files larger than %1%2 in your home folder.")
                .arg(FileTexts::preset(model_.lastOptions().minimumSize),
                     model_.lastOptions().olderThanDays
                         ? QStringLiteral(" and ") +
                               ageFilterTitle(*model_.lastOptions().olderThanDays).toLower()
                         : QString()));
        return;
    }
    QString text = tr("%1, %2 in all.")
                       .arg(frame_->count(static_cast<int>(model_.results().size())),
                            MetricFormat::bytes(model_.totalSize()));
    if (model_.selectedCount() > 0) {
        text += QLatin1Char(' ') + tr("%1 selected (%2).")
                                       .arg(frame_->count(model_.selectedCount()),
                                            MetricFormat::bytes(model_.selectedSize()));
    } else {
        text += QLatin1Char(' ') + tr("Check the files you want to remove.");
    }
    frame_->setSummary(text);
}

void LargeFilesScreen::revealCurrent() {
    const QModelIndex current = view_->currentIndex();
    if (current.isValid()) {
        reveal_(current.data(LargeFilesTable::PathRole).toString());
    }
}

} // namespace tarvik
