#include "app/overview/overview_screen.h"

#include "app/agents/agents_model.h"
#include "app/monitor/health_issues_view.h"
#include "app/monitor/system_monitor_model.h"
#include "app/overview/overview_model.h"
#include "app/shell/navigator.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "core/awake/keep_awake_controller.h"
#include "core/awake/keep_awake_texts.h"
#include "core/text/metric_format.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

OverviewScreen::OverviewScreen(OverviewModel& model, Navigator& navigator,
                               SystemMonitorModel& monitor, AgentsModel* agents,
                               KeepAwakeController* keepAwake, QWidget* parent)
    : QWidget(parent), model_(model), navigator_(navigator), monitor_(monitor), agents_(agents),
      keepAwake_(keepAwake) {
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

    if (agents_ != nullptr) {
        auto* agentBox = new QGroupBox(tr("Agent Limits"), this);
        auto* agentRow = new QHBoxLayout(agentBox);
        agentLimits_ = new QLabel(agentBox);
        agentLimits_->setObjectName(QStringLiteral("agentLimitsTile"));
        agentLimits_->setWordWrap(true);
        auto* open = new QPushButton(tr("Show Agents"), agentBox);
        connect(open, &QPushButton::clicked, this,
                [this] { navigator_.select(AppSection::Agents); });
        agentRow->addWidget(agentLimits_, 1);
        agentRow->addWidget(open);
        layout->addWidget(agentBox);
        connect(agents_, &AgentsModel::cardsChanged, this, &OverviewScreen::renderAgents);
        renderAgents();
    }

    if (keepAwake_ != nullptr) {
        auto* awakeBox = new QGroupBox(tr("Keep Awake"), this);
        auto* awakeRow = new QHBoxLayout(awakeBox);
        keepAwakeTile_ = new QLabel(awakeBox);
        keepAwakeTile_->setObjectName(QStringLiteral("keepAwakeTile"));
        keepAwakeTile_->setWordWrap(true);
        auto* open = new QPushButton(tr("Show Keep Awake"), awakeBox);
        connect(open, &QPushButton::clicked, this,
                [this] { navigator_.select(AppSection::KeepAwake); });
        awakeRow->addWidget(keepAwakeTile_, 1);
        awakeRow->addWidget(open);
        layout->addWidget(awakeBox);
        connect(keepAwake_, &KeepAwakeController::changed, this, &OverviewScreen::renderKeepAwake);
        renderKeepAwake();
    }

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
        if (agents_ != nullptr) {
            agents_->release();
        }
    }
}

void OverviewScreen::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (holding_) {
        holding_ = false;
        monitor_.release(MonitorClient::Window);
        if (agents_ != nullptr) {
            agents_->release();
        }
    }
}

void OverviewScreen::renderAgents() {
    // One line per shown agent: its first limit (the session) or why there is none.
    QStringList lines;
    for (const auto& card : agents_->cards()) {
        if (!card.enabled) {
            continue;
        }
        QString line = title(card.provider) + QStringLiteral(": ");
        if (card.report && !card.report->limits.empty()) {
            const UsageLimit& l = card.report->limits.front();
            line += tr("%1 %2% used").arg(l.title).arg(qRound(l.used * 100.0));
        } else if (card.report) {
            line += tr("no plan limits");
        } else if (card.error) {
            line += card.error->menuText();
        } else {
            line += tr("checking…");
        }
        lines << line;
    }
    agentLimits_->setText(lines.isEmpty() ? tr("No agents are shown.")
                                          : lines.join(QLatin1Char('\n')));
}

void OverviewScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!holding_) {
        holding_ = true;
        monitor_.acquire(MonitorClient::Window);
        if (agents_ != nullptr) {
            agents_->acquire();
        }
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
                                            .arg(MetricFormat::bytes(*model_.junkBytes()))
                                      : tr("Not measured."));
    for (const auto& row : describe(model_.summary())) {
        auto* value = new QLabel(row.value);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setAccessibleName(row.label);
        rows_->addRow(row.label, value);
    }
}

void OverviewScreen::renderKeepAwake() {
    const KeepAwakeState state = keepAwake_->state();
    QString text = awake_text::status(state, keepAwake_->now());
    if (state.isActive) {
        text += QStringLiteral(". ") + awake_text::reason(state);
    }
    if (!keepAwake_->error().isEmpty()) {
        text += QStringLiteral("\n") + keepAwake_->error();
    }
    keepAwakeTile_->setText(text);
}

} // namespace tarvik
