#include "app/monitor/monitor_screen.h"

#include "app/monitor/health_issues_view.h"
#include "app/monitor/process_panel.h"
#include "app/monitor/system_monitor_model.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "core/monitor/reading_report.h"
#include "core/text/metric_format.h"

#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace tarvik {
namespace {

// Colours carry meaning only, and read on light and dark palettes alike.
QString meaningColor(MemoryPressure p) {
    switch (p) {
    case MemoryPressure::Normal:
        return QStringLiteral("#2e9d5b");
    case MemoryPressure::Warning:
        return QStringLiteral("#d38b12");
    case MemoryPressure::Critical:
        return QStringLiteral("#d0453a");
    }
    return {};
}

} // namespace

MonitorScreen::MonitorScreen(SystemMonitorModel& model, Navigator& navigator, QWidget* parent)
    : QWidget(parent), model_(model), navigator_(navigator) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(new ScreenHeader(QStringLiteral("System Monitor"),
                                       sectionSubtitle(AppSection::Monitor), this));
    health_ = new HealthIssuesView(this);
    health_->setObjectName(QStringLiteral("monitorHealth"));
    layout->addWidget(health_);
    connect(health_, &HealthIssuesView::remedyRequested, this,
            [this](HealthIssue::Remedy remedy) { applyRemedy(remedy, model_, navigator_, this); });
    grid_ = new QGridLayout();
    grid_->setHorizontalSpacing(12);
    grid_->setVerticalSpacing(12);
    layout->addLayout(grid_);

    addTile(QStringLiteral("cpu"), tr("CPU"), 0, 0, Metric::CPU, false);
    addTile(QStringLiteral("memory"), tr("Memory"), 0, 1, Metric::Memory, false);
    addTile(QStringLiteral("network"), tr("Network"), 1, 0, Metric::NetworkIn, true);
    addTile(QStringLiteral("disk"), tr("Disk"), 1, 1, Metric::DiskRead, true);
    addTile(QStringLiteral("gpu"), tr("GPU"), 2, 0, Metric::GPU, false);
    addTile(QStringLiteral("battery"), tr("Battery"), 2, 1, Metric::Battery, false);
    addTile(QStringLiteral("load"), tr("Load average"), 3, 0, Metric::Load, true);
    addTile(QStringLiteral("uptime"), tr("Uptime"), 3, 1, std::nullopt, false);
    tiles_[QStringLiteral("uptime")].chart->hide();

    coresBox_ = new QGroupBox(tr("CPU cores"), this);
    cores_ = new QGridLayout(coresBox_);
    layout->addWidget(coresBox_);

    auto* processBox = new QGroupBox(tr("Processes"), this);
    auto* processLayout = new QVBoxLayout(processBox);
    processes_ = new ProcessPanel(model_, processBox);
    processLayout->addWidget(processes_);
    layout->addWidget(processBox);

    auto* actions = new QHBoxLayout();
    actions->addStretch(1);
    resetTotals_ = new QPushButton(tr("Reset Session Totals"), this);
    resetTotals_->setAccessibleName(tr("Reset the network and disk session totals"));
    connect(resetTotals_, &QPushButton::clicked, &model_, &SystemMonitorModel::resetSessionTotals);
    actions->addWidget(resetTotals_);
    layout->addLayout(actions);
    layout->addStretch(1);

    connect(&model_, &SystemMonitorModel::readingChanged, this, &MonitorScreen::render);
    auto showHealth = [this] {
        health_->setIssues(model_.latest() ? std::optional(model_.healthIssues()) : std::nullopt);
    };
    connect(&model_, &SystemMonitorModel::healthChanged, this, showHealth);
    showHealth();
    // A remedy that orders the processes brings the table into view.
    connect(&model_, &SystemMonitorModel::processSortChanged, this, [this] {
        for (QWidget* w = parentWidget(); w != nullptr; w = w->parentWidget()) {
            if (auto* scroll = qobject_cast<QScrollArea*>(w)) {
                scroll->ensureWidgetVisible(processes_);
                break;
            }
        }
    });
    connect(&model_, &SystemMonitorModel::sessionTotalsChanged, this, &MonitorScreen::render);
    render();
}

MonitorScreen::~MonitorScreen() {
    if (holding_) {
        model_.release(MonitorClient::Window);
    }
}

MonitorScreen::Tile& MonitorScreen::addTile(const QString& name, const QString& title, int row,
                                            int column, std::optional<Metric> metric, bool rates) {
    auto* frame = new QFrame(this);
    frame->setObjectName(QStringLiteral("tile_") + name);
    frame->setFrameShape(QFrame::StyledPanel);
    auto* v = new QVBoxLayout(frame);
    auto* heading = new QLabel(title, frame);
    heading->setForegroundRole(QPalette::PlaceholderText);
    Tile& tile = tiles_[name];
    tile.metric = metric;
    tile.value = new QLabel(QStringLiteral("—"), frame);
    QFont big = tile.value->font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    big.setBold(true);
    tile.value->setFont(big);
    tile.value->setAccessibleName(title);
    tile.detail = new QLabel(frame);
    tile.detail->setWordWrap(true);
    tile.chart = new Sparkline(frame);
    tile.chart->setAutoScale(rates);
    v->addWidget(heading);
    v->addWidget(tile.value);
    v->addWidget(tile.detail);
    v->addWidget(tile.chart);
    grid_->addWidget(frame, row, column);
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

void MonitorScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!holding_) {
        holding_ = true;
        model_.acquire(MonitorClient::Window);
    }
}

void MonitorScreen::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (holding_) {
        holding_ = false;
        model_.release(MonitorClient::Window);
    }
}

void MonitorScreen::render() {
    const auto& reading = model_.latest();
    const SessionTotals& totals = model_.sessionTotals();
    auto set = [this](const QString& name, const QString& value, const QString& detail) {
        Tile& t = tiles_[name];
        t.value->setText(value);
        t.detail->setText(detail);
        if (t.metric) {
            t.chart->setValues(model_.history(*t.metric).values());
        }
    };
    if (!reading) {
        set(QStringLiteral("cpu"), QStringLiteral("—"), tr("Measuring…"));
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
        set(QStringLiteral("memory"), QStringLiteral("—"), tr("Not reported by the system."));
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
        r.gpu ? tr("The busiest graphics processor") : noGpuLoadSentence(r.gpuAsleep));

    if (r.battery) {
        const BatteryInfo& b = *r.battery;
        QString detail = b.statusLine();
        if (b.health) {
            detail += tr(" · Health %1").arg(MetricFormat::percent(*b.health));
        }
        if (b.cycleCount) {
            detail += tr(" · %1 cycles").arg(*b.cycleCount);
        }
        if (b.temperature) {
            detail += tr(" · %1 °C").arg(*b.temperature, 0, 'f', 1);
        }
        set(QStringLiteral("battery"), MetricFormat::percent(b.charge), detail);
    } else {
        set(QStringLiteral("battery"), QStringLiteral("—"), noBatterySentence());
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
