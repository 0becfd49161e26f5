#include "app/junk/junk_screen.h"

#include "app/junk/junk_model.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "core/sys/file_names.h"
#include "core/text/metric_format.h"
#include "core/text/path_display.h"
#include "core/text/qt_text.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

constexpr int kCategoryRole = Qt::UserRole + 1;
constexpr int kItemRole = Qt::UserRole + 2;

QString itemsText(int n) {
    return n == 1 ? QStringLiteral("1 item") : QStringLiteral("%1 items").arg(n);
}

} // namespace

JunkScreen::JunkScreen(JunkModel& model, QString home, QWidget* parent)
    : QWidget(parent), model_(model), home_(std::move(home)) {
    confirm_ = [this](const QString& question, const QString& detail) {
        QMessageBox box(QMessageBox::Warning, tr("Clean System Junk"), question,
                        QMessageBox::Cancel, this);
        box.setInformativeText(detail);
        auto* go = box.addButton(tr("Clean"), QMessageBox::DestructiveRole);
        box.setDefaultButton(QMessageBox::Cancel);
        box.exec();
        return box.clickedButton() == go;
    };
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(new ScreenHeader(QStringLiteral("System Junk"),
                                       sectionSubtitle(AppSection::SystemJunk), this));

    auto* actions = new QHBoxLayout();
    summary_ =
        new QLabel(tr("Scan to find caches, logs and other junk in your home folder."), this);
    summary_->setWordWrap(true);
    scan_ = new QPushButton(tr("&Scan"), this);
    scan_->setDefault(true);
    cancel_ = new QPushButton(tr("Cancel"), this);
    clean_ = new QPushButton(tr("&Clean…"), this);
    actions->addWidget(summary_, 1);
    actions->addWidget(scan_);
    actions->addWidget(cancel_);
    actions->addWidget(clean_);
    layout->addLayout(actions);

    progress_ = new QProgressBar(this);
    progress_->setRange(0, 1000);
    progress_->hide();
    layout->addWidget(progress_);

    tree_ = new QTreeWidget(this);
    tree_->setObjectName(QStringLiteral("junkTree"));
    tree_->setColumnCount(2);
    tree_->setHeaderLabels({tr("Name"), tr("Size")});
    tree_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    tree_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    tree_->setAccessibleName(tr("Junk found, by category"));
    tree_->setMinimumHeight(280);
    layout->addWidget(tree_, 1);

    report_ = new QLabel(this);
    report_->setObjectName(QStringLiteral("junkReport"));
    report_->setWordWrap(true);
    report_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    report_->hide();
    layout->addWidget(report_);

    connect(scan_, &QPushButton::clicked, &model_, &JunkModel::scan);
    connect(cancel_, &QPushButton::clicked, &model_, &JunkModel::cancel);
    connect(clean_, &QPushButton::clicked, this, &JunkScreen::requestClean);
    connect(&model_, &JunkModel::scanStarted, this, [this] {
        report_->hide();
        rebuild();
    });
    connect(&model_, &JunkModel::categoryScanned, this, &JunkScreen::rebuild);
    connect(&model_, &JunkModel::scanFinished, this, &JunkScreen::rebuild);
    connect(&model_, &JunkModel::selectionChanged, this, &JunkScreen::refreshChecks);
    connect(&model_, &JunkModel::cleanProgress, this,
            [this](double f) { progress_->setValue(static_cast<int>(f * 1000)); });
    connect(&model_, &JunkModel::cleanFinished, this, [this] {
        rebuild();
        const auto& r = *model_.lastReport();
        QString text = QStringLiteral("<b>%1</b>")
                           .arg(cleanSummary(r, QStringLiteral("item"), QStringLiteral("items"))
                                    .toHtmlEscaped());
        for (const auto& f : r.failures) {
            text += QStringLiteral("<br>%1 — %2")
                        .arg(fileName::display(PathDisplay::abbreviate(f.item.path, home_))
                                 .toHtmlEscaped(),
                             f.message.toHtmlEscaped());
        }
        report_->setText(text);
        report_->show();
    });
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

QString JunkScreen::summaryText() const {
    return summary_->text();
}
QString JunkScreen::reportText() const {
    return report_->isHidden() ? QString() : report_->text();
}

void JunkScreen::rebuild() {
    updating_ = true;
    QSet<int> expanded;
    for (int i = 0; i < tree_->topLevelItemCount(); ++i) {
        if (tree_->topLevelItem(i)->isExpanded()) {
            expanded.insert(tree_->topLevelItem(i)->data(0, kCategoryRole).toInt());
        }
    }
    tree_->clear();
    for (const auto& r : model_.results()) {
        const auto& i = info(r.category);
        auto* row = new QTreeWidgetItem(tree_);
        row->setText(0, QStringLiteral("%1 (%2)").arg(toQString(i.title),
                                                      itemsText(static_cast<int>(r.items.size()))));
        row->setToolTip(0, toQString(i.summary));
        row->setText(1, MetricFormat::bytes(r.totalSize));
        row->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        row->setData(0, kCategoryRole, static_cast<int>(r.category));
        row->setFlags(r.items.empty() ? Qt::ItemIsEnabled
                                      : Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
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
    updating_ = false;
    refreshChecks();
}

void JunkScreen::refreshChecks() {
    updating_ = true;
    for (int i = 0; i < tree_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = tree_->topLevelItem(i);
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
    updateActions();
}

void JunkScreen::updateActions() {
    const bool busy = model_.isScanning() || model_.isCleaning();
    scan_->setEnabled(!busy);
    cancel_->setVisible(busy);
    clean_->setEnabled(!busy && model_.selectedCount() > 0);
    progress_->setVisible(model_.isCleaning());
    if (model_.isScanning()) {
        summary_->setText(tr("Scanning… %1 of %2 categories")
                              .arg(model_.results().size())
                              .arg(kAllJunkCategories.size()));
    } else if (!model_.results().empty()) {
        summary_->setText(tr("%1 selected (%2).")
                              .arg(MetricFormat::bytes(model_.selectedSize()),
                                   itemsText(model_.selectedCount())));
    }
}

void JunkScreen::requestClean() {
    const int count = model_.selectedCount();
    if (count == 0) {
        return;
    }
    const RemovalMode mode = model_.junkMode();
    const QString question =
        tr("Clean %1 (%2)?").arg(itemsText(count), MetricFormat::bytes(model_.selectedSize()));
    const QString detail =
        mode == RemovalMode::DeletePermanently
            ? tr("They will be deleted permanently.")
            : tr("They will be moved to the Trash. Trash contents are always deleted permanently.");
    if (confirm_(question, detail)) {
        progress_->setValue(0);
        model_.clean();
        updateActions();
    }
}

} // namespace tarvik
