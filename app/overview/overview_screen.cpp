#include "app/overview/overview_screen.h"

#include "app/monitor/health_issues_view.h"
#include "app/overview/overview_model.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "core/cleanup/path_display.h"
#include "core/monitor/system_monitor_model.h"
#include "core/shell/navigator.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

OverviewScreen::OverviewScreen(OverviewModel& model, Navigator& navigator,
                               SystemMonitorModel& monitor, QWidget* parent)
    : QWidget(parent), model_(model), navigator_(navigator), monitor_(monitor) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(new ScreenHeader(QStringLiteral("Smart Scan"),
                                       sectionSubtitle(AppSection::Overview), this));

    auto* box = new QGroupBox(tr("This computer"), this);
    rows_ = new QFormLayout(box);
    rows_->setLabelAlignment(Qt::AlignLeft);
    rows_->setHorizontalSpacing(24);
    layout->addWidget(box);

    auto* healthBox = new QGroupBox(tr("Health"), this);
    auto* healthLayout = new QVBoxLayout(healthBox);
    health_ = new HealthIssuesView(healthBox);
    health_->setObjectName(QStringLiteral("overviewHealth"));
    healthLayout->addWidget(health_);
    layout->addWidget(healthBox);
    auto showHealth = [this] {
        health_->setIssues(monitor_.latest() ? std::optional(monitor_.healthIssues())
                                             : std::nullopt);
    };
    connect(&monitor_, &SystemMonitorModel::healthChanged, this, showHealth);
    connect(health_, &HealthIssuesView::remedyRequested, this, [this](HealthIssue::Remedy remedy) {
        applyRemedy(remedy, monitor_, navigator_, this);
    });
    showHealth();

    auto* junkBox = new QGroupBox(tr("System Junk"), this);
    auto* junkRow = new QHBoxLayout(junkBox);
    junk_ = new QLabel(tr("Measuring…"), junkBox);
    junk_->setObjectName(QStringLiteral("junkTile"));
    auto* review = new QPushButton(tr("Review System Junk"), junkBox);
    connect(review, &QPushButton::clicked, this,
            [this] { navigator_.select(AppSection::SystemJunk); });
    junkRow->addWidget(junk_, 1);
    junkRow->addWidget(review);
    layout->addWidget(junkBox);

    auto* actions = new QHBoxLayout();
    state_ = new QLabel(this);
    state_->setForegroundRole(QPalette::PlaceholderText);
    refresh_ = new QPushButton(tr("&Refresh"), this);
    refresh_->setDefault(true);
    refresh_->setAccessibleName(tr("Refresh the summary"));
    actions->addWidget(state_, 1);
    actions->addWidget(refresh_);
    layout->addLayout(actions);
    layout->addStretch(1);

    connect(refresh_, &QPushButton::clicked, &model_, &OverviewModel::refresh);
    connect(&model_, &OverviewModel::summaryChanged, this, &OverviewScreen::render);
    connect(&model_, &OverviewModel::loadingChanged, this, [this](bool loading) {
        refresh_->setEnabled(!loading);
        state_->setText(loading ? tr("Reading…") : QString());
    });
    render();
}

OverviewScreen::~OverviewScreen() {
    if (holding_) {
        monitor_.release(MonitorClient::Window);
    }
}

void OverviewScreen::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (holding_) {
        holding_ = false;
        monitor_.release(MonitorClient::Window);
    }
}

void OverviewScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!holding_) {
        holding_ = true;
        monitor_.acquire(MonitorClient::Window);
    }
    if (!model_.hasSummary()) {
        model_.refresh();
    }
}

void OverviewScreen::render() {
    while (rows_->rowCount() > 0) {
        rows_->removeRow(0);
    }
    if (!model_.hasSummary()) {
        return;
    }
    junk_->setText(model_.junkBytes() ? tr("%1 of caches, logs and other junk can be cleaned.")
                                            .arg(PathDisplay::bytes(*model_.junkBytes()))
                                      : tr("Not measured."));
    for (const auto& row : describe(model_.summary())) {
        auto* value = new QLabel(row.value);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setAccessibleName(row.label);
        rows_->addRow(row.label, value);
    }
}

} // namespace tarvik
