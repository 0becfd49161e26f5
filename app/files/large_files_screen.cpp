#include "app/files/large_files_screen.h"

#include "app/files/file_texts.h"
#include "app/files/large_files_model.h"
#include "app/files/large_files_table.h"
#include "app/files/reveal_in_file_manager.h"
#include "app/files/search_controls.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "core/text/metric_format.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
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

QString filesText(int n) {
    return FileTexts::count(n, QStringLiteral("file"), QStringLiteral("files"));
}

} // namespace

LargeFilesScreen::LargeFilesScreen(LargeFilesModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    confirm_ = [this](const QString& question, const QString& detail) {
        QMessageBox box(QMessageBox::Warning, tr("Remove Files"), question, QMessageBox::Cancel,
                        this);
        box.setInformativeText(detail);
        auto* go = box.addButton(tr("Remove"), QMessageBox::DestructiveRole);
        box.setDefaultButton(QMessageBox::Cancel);
        box.exec();
        return box.clickedButton() == go;
    };
    reveal_ = revealInFileManager;

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(new ScreenHeader(QStringLiteral("Large & Old Files"),
                                       sectionSubtitle(AppSection::LargeFiles), this));
    controls_ = new SearchControls(kSizeThresholds, 100'000'000, kAgeFilters, this);
    layout->addWidget(controls_);

    auto* bar = new QHBoxLayout();
    kinds_ = new QComboBox(this);
    kinds_->setObjectName(QStringLiteral("kindPicker"));
    kinds_->setAccessibleName(tr("Kind of file shown"));
    kinds_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    auto* kindLabel = new QLabel(tr("Sho&w"), this);
    kindLabel->setBuddy(kinds_);
    sort_ = new QComboBox(this);
    sort_->setObjectName(QStringLiteral("sortPicker"));
    sort_->setAccessibleName(tr("Sort order"));
    for (const auto& c : kSortChoices) {
        sort_->addItem(tr(c.title));
    }
    auto* sortLabel = new QLabel(tr("Sort &by"), this);
    sortLabel->setBuddy(sort_);
    revealButton_ = new QPushButton(tr("Re&veal in File Manager"), this);
    revealButton_->setObjectName(QStringLiteral("reveal"));
    remove_ = new QPushButton(tr("&Remove Selected…"), this);
    remove_->setObjectName(QStringLiteral("removeSelected"));
    bar->addWidget(kindLabel);
    bar->addWidget(kinds_);
    bar->addSpacing(12);
    bar->addWidget(sortLabel);
    bar->addWidget(sort_);
    bar->addStretch(1);
    bar->addWidget(revealButton_);
    bar->addWidget(remove_);
    layout->addLayout(bar);

    table_ = new LargeFilesTable(model_, this);
    filter_ = new KindFilter(this);
    filter_->setSourceModel(table_);
    view_ = new QTreeView(this);
    view_->setObjectName(QStringLiteral("largeFilesView"));
    view_->setAccessibleName(tr("Large files found"));
    view_->setModel(filter_);
    view_->setRootIsDecorated(false);
    view_->setUniformRowHeights(true);
    view_->setAlternatingRowColors(true);
    view_->setSortingEnabled(true);
    view_->setSelectionMode(QAbstractItemView::SingleSelection);
    view_->header()->setStretchLastSection(true);
    view_->header()->setSectionResizeMode(LargeFilesTable::Name, QHeaderView::Interactive);
    view_->setColumnWidth(LargeFilesTable::Name, 280);
    view_->setColumnWidth(LargeFilesTable::Size, 90);
    view_->setColumnWidth(LargeFilesTable::Modified, 100);
    view_->sortByColumn(LargeFilesTable::Size, Qt::DescendingOrder);
    view_->setMinimumHeight(260);
    layout->addWidget(view_, 1);

    summary_ = new QLabel(tr("Choose a size and an age, then scan your home folder."), this);
    summary_->setObjectName(QStringLiteral("summary"));
    summary_->setWordWrap(true);
    layout->addWidget(summary_);
    report_ = new QLabel(this);
    report_->setObjectName(QStringLiteral("report"));
    report_->setWordWrap(true);
    report_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    report_->hide();
    layout->addWidget(report_);

    connect(controls_, &SearchControls::scanClicked, this, &LargeFilesScreen::startScan);
    connect(controls_, &SearchControls::cancelClicked, &model_, &LargeFilesModel::cancel);
    connect(remove_, &QPushButton::clicked, this, &LargeFilesScreen::requestRemoval);
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

    connect(&model_, &LargeFilesModel::scanStarted, this, [this] {
        visited_ = 0;
        report_->hide();
        controls_->setStatus(tr("Looking for files…"));
        refresh();
    });
    connect(&model_, &LargeFilesModel::scanProgress, this, [this](const QString&, qint64 n) {
        visited_ = std::max(visited_, n);
        controls_->setStatus(
            tr("Looking for files… %1 entries visited").arg(QLocale().toString(visited_)));
    });
    connect(&model_, &LargeFilesModel::scanFinished, this, [this] {
        controls_->setStatus(model_.wasCancelled()
                                 ? tr("Scan cancelled; these are the files found before it "
                                      "stopped.")
                                 : QString());
        refresh();
    });
    connect(&model_, &LargeFilesModel::resultsChanged, this, &LargeFilesScreen::rebuildKinds);
    connect(&model_, &LargeFilesModel::selectionChanged, this, &LargeFilesScreen::refresh);
    connect(&model_, &LargeFilesModel::removeProgress, this,
            [this](double f) { controls_->setStatus(tr("Removing files…"), f); });
    connect(&model_, &LargeFilesModel::removeFinished, this, [this] {
        controls_->setStatus(QString());
        report_->setText(FileTexts::reportHtml(*model_.lastReport(), model_.home()));
        report_->show();
        refresh();
    });
    rebuildKinds();
}

QString LargeFilesScreen::summaryText() const {
    return summary_->text();
}

QString LargeFilesScreen::reportText() const {
    return report_->isHidden() ? QString() : report_->text();
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
    controls_->setBusy(busy);
    const bool any = !model_.results().empty();
    kinds_->setEnabled(!busy && any);
    sort_->setEnabled(any);
    revealButton_->setEnabled(view_->currentIndex().isValid());
    remove_->setEnabled(!busy && model_.selectedCount() > 0);
    if (model_.isScanning()) {
        summary_->setText(tr("The files appear here when the scan ends."));
        return;
    }
    if (!model_.hasScanned()) {
        return;
    }
    if (!any) {
        summary_->setText(
            tr("No files larger than %1%2 in your home folder.")
                .arg(FileTexts::preset(model_.lastOptions().minimumSize),
                     model_.lastOptions().olderThanDays
                         ? QStringLiteral(" and ") +
                               ageFilterTitle(*model_.lastOptions().olderThanDays).toLower()
                         : QString()));
        return;
    }
    QString text = tr("%1, %2 in all.")
                       .arg(filesText(static_cast<int>(model_.results().size())),
                            MetricFormat::bytes(model_.totalSize()));
    if (model_.selectedCount() > 0) {
        text += QLatin1Char(' ') + tr("%1 selected (%2).")
                                       .arg(filesText(model_.selectedCount()),
                                            MetricFormat::bytes(model_.selectedSize()));
    } else {
        text += QLatin1Char(' ') + tr("Check the files you want to remove.");
    }
    summary_->setText(text);
}

void LargeFilesScreen::revealCurrent() {
    const QModelIndex current = view_->currentIndex();
    if (current.isValid()) {
        reveal_(current.data(LargeFilesTable::PathRole).toString());
    }
}

void LargeFilesScreen::requestRemoval() {
    const int count = model_.selectedCount();
    if (count == 0 || model_.isBusy()) {
        return;
    }
    const QString question =
        tr("Remove %1 (%2)?").arg(filesText(count), MetricFormat::bytes(model_.selectedSize()));
    if (confirm_(question, FileTexts::removalDetail(model_.removalMode()))) {
        report_->hide();
        model_.removeSelected();
        controls_->setStatus(tr("Removing files…"), 0.0);
        refresh();
    }
}

} // namespace tarvik
