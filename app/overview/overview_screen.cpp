#include "app/overview/overview_screen.h"

#include "app/agents/agents_model.h"
#include "app/monitor/health_issues_view.h"
#include "app/monitor/system_monitor_model.h"
#include "app/overview/overview_model.h"
#include "app/shell/card.h"
#include "app/shell/hold_while_shown.h"
#include "app/shell/navigator.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/stat_card.h"
#include "app/shell/theme.h"
#include "core/awake/keep_awake_controller.h"
#include "core/awake/keep_awake_texts.h"
#include "core/text/metric_format.h"
#include "core/text/qt_text.h"
#include "dock/dock_folders.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {
namespace {

constexpr int kTickMs = 60 * 1000; // uptime moves by the minute

QString bytes(std::uint64_t n) {
    return MetricFormat::bytes(static_cast<std::int64_t>(n));
}

} // namespace

OverviewScreen::OverviewScreen(OverviewModel& model, Navigator& navigator,
                               SystemMonitorModel& monitor, AgentsModel* agents,
                               KeepAwakeController* keepAwake, const DockFolders* dock,
                               QWidget* parent)
    : QWidget(parent), model_(model), navigator_(navigator), monitor_(monitor), agents_(agents),
      keepAwake_(keepAwake), dock_(dock) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout->setSpacing(space::m);

    auto* top = new QHBoxLayout();
    top->addWidget(
        new ScreenHeader(QStringLiteral("Smart Scan"), sectionSubtitle(AppSection::Overview), this),
        1);
    state_ = new QLabel(this);
    setTextStyle(state_, TextStyle::Secondary);
    refresh_ = new QPushButton(tr("&Refresh"), this);
    refresh_->setDefault(true);
    refresh_->setAccessibleName(tr("Refresh the summary"));
    top->addWidget(state_, 0, Qt::AlignTop);
    top->addWidget(refresh_, 0, Qt::AlignTop);
    layout->addLayout(top);

    auto* grid = new QGridLayout();
    grid->setSpacing(space::m);
    layout->addLayout(grid);

    disk_ = new StatCard("internaldrive", tr("Free Space"), this);
    disk_->setObjectName(QStringLiteral("diskCard"));
    memory_ = new StatCard("memorychip", tr("Memory"), this);
    memory_->setObjectName(QStringLiteral("memoryCard"));
    junk_ = new StatCard("trash.circle", tr("System Junk"), this);
    junk_->setObjectName(QStringLiteral("junkCard"));
    junk_->detailLabel()->setObjectName(QStringLiteral("junkTile"));
    connect(junk_->addButton(tr("Review System Junk")), &QPushButton::clicked, this,
            [this] { navigator_.select(AppSection::SystemJunk); });
    grid->addWidget(disk_, 0, 0);
    grid->addWidget(memory_, 0, 1);
    grid->addWidget(junk_, 0, 2);

    auto* healthCard = new Card(tr("Health"), this, "waveform.path.ecg");
    health_ = new HealthIssuesView(healthCard);
    health_->setObjectName(QStringLiteral("overviewHealth"));
    healthCard->body()->addWidget(health_);
    healthCard->body()->addStretch(1);
    grid->addWidget(healthCard, 1, 0, 1, 2);
    auto showHealth = [this] {
        health_->setIssues(monitor_.latest() ? std::optional(monitor_.healthIssues())
                                             : std::nullopt);
    };
    connect(&monitor_, &SystemMonitorModel::healthChanged, this, showHealth);
    connect(health_, &HealthIssuesView::remedyRequested, this, [this](HealthIssue::Remedy remedy) {
        applyRemedy(remedy, monitor_, navigator_, this);
    });
    showHealth();

    auto* machine = new Card(tr("This Computer"), this, "info.circle");
    rows_ = new QFormLayout();
    rows_->setLabelAlignment(Qt::AlignLeft);
    rows_->setHorizontalSpacing(space::m);
    rows_->setVerticalSpacing(space::xs);
    machine->body()->addLayout(rows_);
    machine->body()->addStretch(1);
    grid->addWidget(machine, 1, 2);

    int column = 0;
    if (agents_ != nullptr) {
        auto* card = new Card(tr("Agent Limits"), this, "cpu");
        agentLimits_ = new QLabel(card);
        agentLimits_->setObjectName(QStringLiteral("agentLimitsTile"));
        agentLimits_->setWordWrap(true);
        card->body()->addWidget(agentLimits_);
        card->body()->addStretch(1);
        auto* open = new QPushButton(tr("Show Agents"), card);
        connect(open, &QPushButton::clicked, this,
                [this] { navigator_.select(AppSection::Agents); });
        card->body()->addWidget(open, 0, Qt::AlignLeft);
        // Beside the agents, the small cards stack in the third column.
        grid->addWidget(card, 2, column, dock_ != nullptr ? 2 : 1, 2);
        column += 2;
        connect(agents_, &AgentsModel::cardsChanged, this, &OverviewScreen::renderAgents);
        renderAgents();
    }

    if (keepAwake_ != nullptr) {
        auto* card = new Card(tr("Keep Awake"), this, "cup.and.heat.waves");
        keepAwakeTile_ = new QLabel(card);
        keepAwakeTile_->setObjectName(QStringLiteral("keepAwakeTile"));
        keepAwakeTile_->setWordWrap(true);
        card->body()->addWidget(keepAwakeTile_);
        card->body()->addStretch(1);
        auto* open = new QPushButton(tr("Show Keep Awake"), card);
        connect(open, &QPushButton::clicked, this,
                [this] { navigator_.select(AppSection::KeepAwake); });
        card->body()->addWidget(open, 0, Qt::AlignLeft);
        grid->addWidget(card, 2, column, 1, column == 0 ? 3 : 1);
        connect(keepAwake_, &KeepAwakeController::changed, this, &OverviewScreen::renderKeepAwake);
        renderKeepAwake();
    }
    if (dock_ != nullptr) {
        auto* card = new Card(tr("Dock Folders"), this, "square.grid.3x3.fill");
        dockTile_ = new QLabel(card);
        dockTile_->setObjectName(QStringLiteral("dockFoldersTile"));
        dockTile_->setWordWrap(true);
        card->body()->addWidget(dockTile_);
        card->body()->addStretch(1);
        auto* open = new QPushButton(tr("Show Dock Folders"), card);
        connect(open, &QPushButton::clicked, this,
                [this] { navigator_.select(AppSection::DockFolders); });
        card->body()->addWidget(open, 0, Qt::AlignLeft);
        grid->addWidget(card, 3, agents_ != nullptr ? 2 : 0, 1, agents_ != nullptr ? 1 : 3);
        renderDock();
    }
    for (int c = 0; c < 3; ++c) {
        grid->setColumnStretch(c, 1);
    }
    layout->addStretch(1);

    connect(refresh_, &QPushButton::clicked, &model_, &OverviewModel::refresh);
    connect(&model_, &OverviewModel::summaryChanged, this, &OverviewScreen::render);
    connect(&model_, &OverviewModel::junkChanged, this, &OverviewScreen::renderJunk);
    connect(&model_, &OverviewModel::loadingChanged, this, [this](bool loading) {
        refresh_->setEnabled(!loading);
        state_->setText(loading ? tr("Measuring…") : QString());
        renderJunk();
    });
    // The monitor samples (and the agents refresh) while Smart Scan shows them.
    holdWhileShown(
        this,
        [&monitor = monitor_, agents = agents_] {
            monitor.acquire(MonitorClient::Window);
            if (agents != nullptr) {
                agents->acquire();
            }
        },
        [&monitor = monitor_, agents = agents_] {
            monitor.release(MonitorClient::Window);
            if (agents != nullptr) {
                agents->release();
            }
        });
    tick_.setInterval(kTickMs);
    connect(&tick_, &QTimer::timeout, &model_, &OverviewModel::refreshSummary);
    render();
}

void OverviewScreen::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    tick_.stop();
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
            line += l.title + QLatin1Char(' ') + percentUsed(l.used);
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
    // What happened elsewhere (a clean, an hour of uptime) shows as soon as Smart Scan does.
    model_.refreshSummary();
    tick_.start();
    if (dock_ != nullptr) {
        renderDock(); // folders made in the command line or by a link since
    }
}

void OverviewScreen::renderJunk() {
    if (const auto junk = model_.junkBytes()) {
        junk_->setValue(MetricFormat::bytes(*junk),
                        *junk > 0 ? tr("of caches, logs and other junk can be cleaned.")
                                  : tr("No junk to clean."));
    } else {
        junk_->setValue(QStringLiteral("—"),
                        model_.isMeasuringJunk() ? tr("Measuring…") : tr("Not measured."));
    }
}

void OverviewScreen::render() {
    renderJunk();
    if (!model_.hasSummary()) {
        disk_->setValue(QStringLiteral("—"), tr("Measuring…"));
        memory_->setValue(QStringLiteral("—"), tr("Measuring…"));
        return;
    }
    const MachineSummary& s = model_.summary();
    if (s.homeDiskFree && s.homeDiskTotal && *s.homeDiskTotal > 0) {
        disk_->setValue(
            bytes(*s.homeDiskFree),
            tr("free of %1 on the disk of your home folder").arg(bytes(*s.homeDiskTotal)));
        disk_->setFraction(1.0 - static_cast<double>(*s.homeDiskFree) /
                                     static_cast<double>(*s.homeDiskTotal));
    } else {
        disk_->setValue(QStringLiteral("—"), tr("The system does not report it."));
        disk_->setFraction(std::nullopt);
    }
    if (const auto used = s.memoryUsed(); used && s.memoryTotal) {
        memory_->setValue(MetricFormat::percent(*s.memoryUsedFraction()),
                          tr("%1 of %2 in use").arg(bytes(*used), bytes(*s.memoryTotal)));
        memory_->setFraction(s.memoryUsedFraction());
    } else {
        memory_->setValue(QStringLiteral("—"), tr("The system does not report it."));
        memory_->setFraction(std::nullopt);
    }
    // The rows are made once and their words changed after, so the card's height follows them.
    for (const auto& row : describe(s)) {
        if (row.label == QLatin1String("Memory") || row.label == QLatin1String("Home disk")) {
            continue; // the cards above show them
        }
        QLabel*& value = machineRows_[row.label];
        if (value == nullptr) {
            value = new QLabel(this);
            value->setWordWrap(true);
            value->setTextInteractionFlags(Qt::TextSelectableByMouse);
            value->setAccessibleName(row.label);
            auto* label = new QLabel(row.label, this);
            setTextStyle(label, TextStyle::Secondary);
            rows_->addRow(label, value);
        }
        value->setText(row.value);
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

void OverviewScreen::renderDock() {
    dockTile_->setText(dock_->summary());
}

} // namespace tarvik
