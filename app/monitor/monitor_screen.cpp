#include "app/monitor/monitor_screen.h"

#include "app/monitor/health_issues_view.h"
#include "app/monitor/process_panel.h"
#include "app/monitor/system_monitor_model.h"
#include "app/shell/card.h"
#include "app/shell/hold_while_shown.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/stat_card.h"
#include "app/shell/theme.h"
#include "core/monitor/reading_report.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

QString meaningColor(MemoryPressure p) {
    switch (p) {
    case MemoryPressure::Normal:
        return tarvik::meaningColor(Meaning::Good).name();
    case MemoryPressure::Warning:
        return tarvik::meaningColor(Meaning::Watch).name();
    case MemoryPressure::Critical:
        return tarvik::meaningColor(Meaning::Critical).name();
    }
    return {};
}

} // namespace

MonitorScreen::MonitorScreen(SystemMonitorModel& model, Navigator& navigator, QWidget* parent)
    : QWidget(parent), model_(model), navigator_(navigator) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout->setSpacing(space::m);
    layout->addWidget(new ScreenHeader(QStringLiteral("System Monitor"),
                                       sectionSubtitle(AppSection::Monitor), this));
    health_ = new HealthIssuesView(this);
    health_->setObjectName(QStringLiteral("monitorHealth"));
    health_->setHidesWhenClear(true);
    layout->addWidget(health_);
    connect(health_, &HealthIssuesView::remedyRequested, this,
            [this](HealthIssue::Remedy remedy) { applyRemedy(remedy, model_, navigator_, this); });

    // The readings and the process table each get the whole page: the table is long, and in a
    // page of its own it never sits below the fold or takes the page's wheel.
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("monitorTabs"));
    tabs_->setDocumentMode(true);
    layout->addWidget(tabs_, 1);

    auto* readings = new QWidget(tabs_);
    auto* readingsLayout = new QVBoxLayout(readings);
    readingsLayout->setContentsMargins(0, space::m, 0, 0);
    readingsLayout->setSpacing(space::m);
    grid_ = new QGridLayout();
    grid_->setSpacing(space::m);
    readingsLayout->addLayout(grid_);
    addTile(QStringLiteral("cpu"), "cpu", tr("CPU"), 0, 0, Metric::CPU, false);
    addTile(QStringLiteral("memory"), "memorychip", tr("Memory"), 0, 1, Metric::Memory, false);
    addTile(QStringLiteral("network"), "network", tr("Network"), 1, 0, Metric::NetworkIn, true);
    addTile(QStringLiteral("disk"), "internaldrive", tr("Disk"), 1, 1, Metric::DiskRead, true);
    addTile(QStringLiteral("gpu"), "gpu", tr("GPU"), 2, 0, Metric::GPU, false);
    addTile(QStringLiteral("battery"), "battery.25", tr("Battery"), 2, 1, Metric::Battery, false);
    addTile(QStringLiteral("load"), "waveform.path.ecg", tr("Load Average"), 3, 0, Metric::Load,
            true);
    addTile(QStringLiteral("uptime"), "clock", tr("Uptime"), 3, 1, std::nullopt, false);
    grid_->setColumnStretch(0, 1);
    grid_->setColumnStretch(1, 1);

    auto* coresCard = new Card(tr("CPU Cores"), readings, "cpu");
    coresBox_ = coresCard;
    cores_ = new QGridLayout();
    cores_->setHorizontalSpacing(space::m);
    cores_->setVerticalSpacing(space::s);
    coresCard->body()->addLayout(cores_);
    readingsLayout->addWidget(coresCard);

    auto* actions = new QHBoxLayout();
    actions->addStretch(1);
    resetTotals_ = new QPushButton(tr("Reset Session Totals"), readings);
    resetTotals_->setAccessibleName(tr("Reset the network and disk session totals"));
    connect(resetTotals_, &QPushButton::clicked, &model_, &SystemMonitorModel::resetSessionTotals);
    actions->addWidget(resetTotals_);
    readingsLayout->addLayout(actions);
    readingsLayout->addStretch(1);
    tabs_->addTab(readings, tr("&Readings"));

    processes_ = new ProcessPanel(model_, tabs_);
    processes_->setContentsMargins(0, space::m, 0, 0);
    tabs_->addTab(processes_, tr("&Processes"));

    holdWhileShown(
        this, [&m = model_] { m.acquire(MonitorClient::Window); },
        [&m = model_] { m.release(MonitorClient::Window); });
    connect(&model_, &SystemMonitorModel::readingChanged, this, &MonitorScreen::render);
    auto showHealth = [this] {
        health_->setIssues(model_.latest() ? std::optional(model_.healthIssues()) : std::nullopt);
    };
    connect(&model_, &SystemMonitorModel::healthChanged, this, showHealth);
    showHealth();
    // A remedy that orders the processes brings the table into view.
    connect(&model_, &SystemMonitorModel::processSortChanged, this,
            [this] { tabs_->setCurrentWidget(processes_); });
    connect(&model_, &SystemMonitorModel::sessionTotalsChanged, this, &MonitorScreen::render);
    render();
}

MonitorScreen::Tile& MonitorScreen::addTile(const QString& name, std::string_view symbol,
                                            const QString& title, int row, int column,
                                            std::optional<Metric> metric, bool rates) {
    auto* card = new StatCard(symbol, title, this);
    card->setObjectName(QStringLiteral("tile_") + name);
    Tile& tile = tiles_[name];
    tile.metric = metric;
    tile.value = card->valueLabel();
    tile.detail = card->detailLabel();
    tile.detail->setTextFormat(Qt::RichText);
    tile.chart = new Sparkline(card);
    tile.chart->setAutoScale(rates);
    tile.chart->setVisible(metric.has_value());
    card->body()->addWidget(tile.chart);
    grid_->addWidget(card, row, column);
    return tile;
}

QString MonitorScreen::tileValue(const QString& name) const {
    const auto it = tiles_.find(name);
    return it == tiles_.end() ? QString() : it->second.value->text();
}

QString MonitorScreen::tileDetail(const QString& name) const {
    const auto it = tiles_.find(name);
    return it == tiles_.end() ? QString() : it->second.detail->text();
}

void MonitorScreen::render() {
    const auto& reading = model_.latest();
    const SessionTotals& totals = model_.sessionTotals();
    // A reading the machine cannot give shows its sentence, never a flat line at zero.
    auto set = [this](const QString& name, const QString& value, const QString& detail,
                      bool hasFigure = true) {
        Tile& t = tiles_[name];
        t.value->setText(value);
        t.detail->setText(detail);
        t.detail->setVisible(!detail.isEmpty());
        if (t.metric) {
            t.chart->setVisible(hasFigure);
            t.chart->setValues(hasFigure ? model_.history(*t.metric).values()
                                         : std::vector<double>{});
        }
    };
    if (!reading) {
        set(QStringLiteral("cpu"), QStringLiteral("—"), tr("Measuring…"), false);
        return;
    }
    const SystemReading& r = *reading;
    set(QStringLiteral("cpu"), r.cpu ? MetricFormat::percent(r.cpu->total()) : QStringLiteral("—"),
        (r.cpu ? tr("User %1 · System %2 · ")
                     .arg(MetricFormat::percent(r.cpu->user), MetricFormat::percent(r.cpu->system))
               : tr("Measuring… · ")) +
            model_.topology().summary());

    if (r.memory) {
        const MemoryStats& m = *r.memory;
        set(QStringLiteral("memory"),
            tr("%1 of %2").arg(MetricFormat::bytes(m.used()), MetricFormat::bytes(m.total)),
            tr("App %1 · Cached %2 · Compressed %3 · Swap %4<br>Pressure: "
               "<span style=\"color:%5\">%6</span>")
                .arg(MetricFormat::bytes(m.appMemory()), MetricFormat::bytes(m.cachedFiles()),
                     MetricFormat::bytes(m.compressed),
                     m.swapTotal > 0 ? tr("%1 of %2")
                                           .arg(MetricFormat::bytes(m.swapUsed),
                                                MetricFormat::bytes(m.swapTotal))
                                     : tr("none"),
                     meaningColor(m.pressure()), title(m.pressure())));
    } else {
        set(QStringLiteral("memory"), QStringLiteral("—"), tr("Not reported by the system."),
            false);
    }

    set(QStringLiteral("network"),
        r.network ? QStringLiteral("↓ %1  ↑ %2")
                        .arg(MetricFormat::rate(r.network->firstPerSecond),
                             MetricFormat::rate(r.network->secondPerSecond))
                  : QStringLiteral("—"),
        tr("This session: %1 received · %2 sent")
            .arg(MetricFormat::bytes(totals.received), MetricFormat::bytes(totals.sent)));
    set(QStringLiteral("disk"),
        r.disk ? tr("Read %1  Write %2")
                     .arg(MetricFormat::rate(r.disk->firstPerSecond),
                          MetricFormat::rate(r.disk->secondPerSecond))
               : QStringLiteral("—"),
        tr("This session: %1 read · %2 written")
            .arg(MetricFormat::bytes(totals.read), MetricFormat::bytes(totals.written)));

    set(QStringLiteral("gpu"), r.gpu ? MetricFormat::percent(*r.gpu) : QStringLiteral("—"),
        r.gpu ? tr("The busiest graphics processor") : noGpuLoadSentence(r.gpuAsleep),
        r.gpu.has_value());

    if (r.battery) {
        const BatteryInfo& b = *r.battery;
        QString detail = b.statusLine();
        if (b.health) {
            detail += tr(" · Health %1").arg(MetricFormat::percent(*b.health));
        }
        if (b.cycleCount) {
            detail += QStringLiteral(" · ") + countOf(*b.cycleCount, u"cycle", u"cycles");
        }
        if (b.temperature) {
            detail += tr(" · %1 °C").arg(*b.temperature, 0, 'f', 1);
        }
        set(QStringLiteral("battery"), MetricFormat::percent(b.charge), detail);
    } else {
        set(QStringLiteral("battery"), QStringLiteral("—"), noBatterySentence(), false);
    }

    set(QStringLiteral("load"),
        r.loadAverage ? QString::number(r.loadAverage->one, 'f', 2) : QStringLiteral("—"),
        r.loadAverage ? tr("1 min · 5 min %1 · 15 min %2")
                            .arg(r.loadAverage->five, 0, 'f', 2)
                            .arg(r.loadAverage->fifteen, 0, 'f', 2)
                      : tr("Not reported by the system."));
    const auto up = r.uptimeSeconds();
    set(QStringLiteral("uptime"), up ? MetricFormat::duration(*up) : QStringLiteral("—"),
        r.thermal ? tr("Temperature: %1").arg(title(*r.thermal)) : QString());
    renderCores();
}

void MonitorScreen::renderCores() {
    const auto& r = model_.latest();
    const std::size_t n = r ? r->perCore.size() : 0;
    coresBox_->setVisible(n > 0);
    while (coreBars_.size() < n) {
        const int i = static_cast<int>(coreBars_.size());
        auto* bar = new QProgressBar(coresBox_);
        bar->setRange(0, 100);
        bar->setFormat(tr("Core %1: %p%").arg(i + 1));
        bar->setAccessibleName(tr("Core %1 load").arg(i + 1));
        cores_->addWidget(bar, i / 4, i % 4);
        coreBars_.push_back(bar);
    }
    for (std::size_t i = 0; i < coreBars_.size(); ++i) {
        coreBars_[i]->setVisible(i < n);
        if (i < n) {
            coreBars_[i]->setValue(static_cast<int>(std::lround(r->perCore[i].total() * 100)));
        }
    }
}

} // namespace tarvik
