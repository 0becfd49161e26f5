#include "app/cleanup/cleanup_screen.h"

#include "app/cleanup/cleanup_model.h"
#include "app/cleanup/file_texts.h"
#include "app/shell/empty_state.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/theme.h"
#include "core/sys/file_names.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

CleanupScreen::CleanupScreen(CleanupModel& model, Texts texts, QWidget* parent)
    : QWidget(parent), model_(model), texts_(std::move(texts)) {
    confirm_ = [this](const QString& question, const QString& detail) {
        QMessageBox box(QMessageBox::Warning, texts_.confirmTitle, question, QMessageBox::Cancel,
                        this);
        box.setInformativeText(detail);
        auto* go = box.addButton(texts_.verb, QMessageBox::DestructiveRole);
        box.setDefaultButton(QMessageBox::Cancel);
        box.exec();
        return box.clickedButton() == go;
    };
    progressText_ = [](const QString& phase, qint64 n, qint64) {
        return tr("%1… %2 visited").arg(phase, countOf(n, u"entry", u"entries"));
    };

    layout_ = new QVBoxLayout(this);
    layout_->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout_->setSpacing(space::m);
    // The title with the main action at its right, as every screen has it.
    auto* top = new QHBoxLayout();
    top->addWidget(new ScreenHeader(texts_.title, sectionSubtitle(texts_.section), this), 1);
    scan_ = new QPushButton(tr("&Scan"), this);
    scan_->setObjectName(QStringLiteral("scan"));
    scan_->setDefault(true);
    cancel_ = new QPushButton(tr("Cancel"), this);
    cancel_->setObjectName(QStringLiteral("cancel"));
    cancel_->hide();
    top->addWidget(scan_, 0, Qt::AlignTop);
    top->addWidget(cancel_, 0, Qt::AlignTop);
    layout_->addLayout(top);

    controlRow_ = new QHBoxLayout();
    layout_->addLayout(controlRow_);

    actionBar_ = new QWidget(this);
    actions_ = new QHBoxLayout(actionBar_);
    actions_->setContentsMargins(0, 0, 0, 0);
    actions_->addStretch(1);
    actionBar_->hide();
    layout_->addWidget(actionBar_);

    auto* running = new QHBoxLayout();
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("scanStatus"));
    status_->hide();
    progress_ = new QProgressBar(this);
    progress_->setAccessibleName(tr("Progress"));
    progress_->setTextVisible(false);
    progress_->setMaximumWidth(260);
    progress_->hide();
    running->addWidget(status_, 1);
    running->addWidget(progress_);
    layout_->addLayout(running);

    // Before the first search the view has nothing to show: it says what a scan finds.
    empty_ = new EmptyState(info(texts_.section).symbol, QString(), this);
    empty_->setObjectName(QStringLiteral("cleanupEmpty"));
    connect(empty_->setAction(tr("Scan")), &QPushButton::clicked, this,
            &CleanupScreen::scanRequested);
    layout_->addWidget(empty_, 1);

    auto* bottom = new QHBoxLayout();
    summary_ = new QLabel(this);
    summary_->setObjectName(QStringLiteral("summary"));
    summary_->setWordWrap(true);
    remove_ = new QPushButton(tr("&%1 Selected…").arg(texts_.verb), this);
    remove_->setObjectName(QStringLiteral("removeSelected"));
    bottom->addWidget(summary_, 1);
    bottom->addWidget(remove_, 0, Qt::AlignTop);
    layout_->addLayout(bottom);
    hint_ = new QLabel(this);
    hint_->setObjectName(QStringLiteral("hint"));
    hint_->setWordWrap(true);
    setTextStyle(hint_, TextStyle::Secondary);
    hint_->hide();
    layout_->addWidget(hint_);
    report_ = new QLabel(this);
    report_->setObjectName(QStringLiteral("report"));
    report_->setWordWrap(true);
    report_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    report_->hide();
    layout_->addWidget(report_);

    connect(scan_, &QPushButton::clicked, this, &CleanupScreen::scanRequested);
    connect(cancel_, &QPushButton::clicked, &model_, &CleanupModel::cancel);
    connect(remove_, &QPushButton::clicked, this, &CleanupScreen::requestRemoval);
    connect(&model_, &CleanupModel::scanStarted, this, [this] {
        report_->hide();
        hint_->hide();
        setStatus(progressText_(tr("Looking for files"), 0, 0));
        refresh();
    });
    connect(&model_, &CleanupModel::scanProgress, this,
            [this](const QString& phase, qint64 n, qint64 total) {
                // A known end makes the bar say how far along it is.
                setStatus(progressText_(phase, n, total),
                          total > 0
                              ? std::optional(static_cast<double>(n) / static_cast<double>(total))
                              : std::nullopt);
            });
    connect(&model_, &CleanupModel::scanFinished, this, [this] {
        setStatus(model_.wasCancelled() ? texts_.cancelled : QString());
        refresh();
    });
    connect(&model_, &CleanupModel::selectionChanged, this, &CleanupScreen::refresh);
    connect(&model_, &CleanupModel::removeProgress, this,
            [this](double f) { setStatus(texts_.working, f); });
    connect(&model_, &CleanupModel::removeFinished, this, [this] {
        setStatus(QString());
        report_->setText(
            FileTexts::reportHtml(*model_.lastReport(), model_.home(), texts_.one, texts_.many));
        report_->show();
        refresh();
    });
    refresh();
}

void CleanupScreen::setControls(QWidget* controls) {
    controls_ = controls;
    controlRow_->addWidget(controls, 1);
}

void CleanupScreen::addAction(QWidget* widget) {
    actions_->insertWidget(leadingActions_++, widget);
    actionBar_->show();
}

void CleanupScreen::addTrailingAction(QWidget* widget) {
    actions_->addWidget(widget);
    actionBar_->show();
}

void CleanupScreen::setView(QWidget* view) {
    view_ = view;
    layout_->insertWidget(layout_->indexOf(empty_), view, 1);
    refresh();
}

void CleanupScreen::setProgressText(std::function<QString(const QString&, qint64, qint64)> text) {
    progressText_ = std::move(text);
}

void CleanupScreen::setSummary(const QString& text) {
    summary_->setText(text);
    empty_->setSentence(text);
}

void CleanupScreen::showHint(const QString& text) {
    hint_->setText(text);
    hint_->show();
}

void CleanupScreen::hideHint() {
    hint_->hide();
}

QString CleanupScreen::summaryText() const {
    return summary_->text();
}

QString CleanupScreen::hintText() const {
    return hint_->isHidden() ? QString() : hint_->text();
}

QString CleanupScreen::reportText() const {
    return report_->isHidden() ? QString() : report_->text();
}

QString CleanupScreen::statusText() const {
    return status_->isHidden() ? QString() : status_->text();
}

QString CleanupScreen::count(int n) const {
    return countOf(n, texts_.one, texts_.many);
}

void CleanupScreen::setStatus(const QString& status, std::optional<double> fraction) {
    status_->setText(status);
    status_->setVisible(!status.isEmpty());
    if (fraction) {
        progress_->setRange(0, 1000);
        progress_->setValue(static_cast<int>(*fraction * 1000));
    } else {
        progress_->setRange(0, 0); // busy, without a known end
    }
}

void CleanupScreen::refresh() {
    const bool busy = model_.isBusy();
    if (controls_ != nullptr) {
        controls_->setEnabled(!busy);
    }
    scan_->setEnabled(!busy);
    cancel_->setVisible(busy);
    progress_->setVisible(busy);
    // The view shows from the first search on; until then the empty state stands in for it and
    // for the summary line it would repeat.
    const bool before = !model_.hasScanned() && !model_.isScanning();
    empty_->setVisible(before);
    if (view_ != nullptr) {
        view_->setVisible(!before);
    }
    summary_->setVisible(!before);
    remove_->setVisible(!before);
    remove_->setEnabled(!busy && model_.selectedCount() > 0);
}

void CleanupScreen::requestRemoval() {
    const int n = model_.selectedCount();
    if (n == 0 || model_.isBusy()) {
        return;
    }
    const auto groups = model_.chosenGroups();
    // One item is named; several are counted.
    QString what = count(n);
    bool trashed = false;
    bool deleted = false;
    for (const auto& g : groups) {
        if (n == 1 && g.items.size() == 1) {
            what = QStringLiteral("“%1”").arg(fileName::display(g.items.front().name()));
        }
        trashed = trashed || (!g.items.empty() && g.mode == RemovalMode::MoveToTrash);
        deleted = deleted || (!g.items.empty() && g.mode == RemovalMode::DeletePermanently);
    }
    const QString question =
        tr("%1 %2 (%3)?").arg(texts_.verb, what, MetricFormat::bytes(model_.selectedSize()));
    QString detail =
        trashed && deleted
            ? tr("They will be moved to the Trash. Trash contents are always deleted "
                 "permanently.")
            : FileTexts::removalDetail(
                  deleted ? RemovalMode::DeletePermanently : RemovalMode::MoveToTrash, n);
    if (!texts_.keptNote.isEmpty()) {
        detail += QLatin1Char(' ') + texts_.keptNote;
    }
    if (confirm_(question, detail)) {
        report_->hide();
        hint_->hide();
        setStatus(texts_.working, 0.0);
        model_.removeSelected();
        refresh();
    }
}

} // namespace tarvik
