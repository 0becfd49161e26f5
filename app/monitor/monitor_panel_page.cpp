#include "app/monitor/monitor_panel_page.h"

#include "app/monitor/system_monitor_model.h"
#include "app/shell/panel_figure.h"
#include "core/monitor/reading_report.h"
#include "core/text/metric_format.h"

#include <QGridLayout>

namespace tarvik {
namespace {

const QString kDash = QStringLiteral("—");

std::optional<MenuBarStat> glyphOf(const QString& name) {
    static const std::map<QString, MenuBarStat> kGlyphs{
        {QStringLiteral("cpu"), MenuBarStat::Cpu},
        {QStringLiteral("memory"), MenuBarStat::Memory},
        {QStringLiteral("gpu"), MenuBarStat::Gpu},
        {QStringLiteral("download"), MenuBarStat::Download},
        {QStringLiteral("upload"), MenuBarStat::Upload},
        {QStringLiteral("battery"), MenuBarStat::Battery},
    };
    const auto it = kGlyphs.find(name);
    return it == kGlyphs.end() ? std::nullopt : std::optional(it->second);
}

} // namespace

MonitorPanelPage::MonitorPanelPage(Kind kind, SystemMonitorModel& model, QWidget* parent)
    : QWidget(parent), kind_(kind), model_(model) {
    auto* grid = new QGridLayout(this);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(12);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    switch (kind_) {
    case Kind::Processors:
        add(QStringLiteral("cpu"), tr("CPU"), 0, 0, 1);
        add(QStringLiteral("memory"), tr("Memory"), 0, 1, 1);
        add(QStringLiteral("gpu"), tr("GPU"), 1, 0, 2);
        break;
    case Kind::Network:
        add(QStringLiteral("download"), tr("Download"), 0, 0, 1);
        add(QStringLiteral("upload"), tr("Upload"), 0, 1, 1);
        add(QStringLiteral("disk"), tr("Startup disk"), 1, 0, 2);
        break;
    case Kind::Battery:
        add(QStringLiteral("battery"), tr("Battery"), 0, 0, 2);
        break;
    }
    grid->setRowStretch(grid->rowCount(), 1);
    connect(&model_, &SystemMonitorModel::readingChanged, this, &MonitorPanelPage::render);
    connect(&model_, &SystemMonitorModel::sessionTotalsChanged, this, &MonitorPanelPage::render);
    render();
}

void MonitorPanelPage::add(const QString& name, const QString& caption, int row, int column,
                           int span) {
    auto* figure = new PanelFigure(caption, glyphOf(name), this);
    figure->setObjectName(QStringLiteral("figure_") + name);
    static_cast<QGridLayout*>(layout())->addWidget(figure, row, column, 1, span);
    figures_[name] = figure;
}

void MonitorPanelPage::render() {
    if (!model_.latest()) {
        for (auto& [name, figure] : figures_) {
            figure->setFigure(kDash, tr("Measuring…"));
        }
        return;
    }
    switch (kind_) {
    case Kind::Processors:
        renderProcessors();
        break;
    case Kind::Network:
        renderNetwork();
        break;
    case Kind::Battery:
        renderBattery();
        break;
    }
}

void MonitorPanelPage::renderProcessors() {
    const SystemReading& r = *model_.latest();
    PanelFigure* cpu = figures_.at(QStringLiteral("cpu"));
    if (r.cpu) {
        cpu->setFigure(
            MetricFormat::percent(r.cpu->total()),
            tr("User %1 · System %2")
                .arg(MetricFormat::percent(r.cpu->user), MetricFormat::percent(r.cpu->system)),
            level(MenuBarStat::Cpu, r.cpu->total()));
    } else {
        cpu->setFigure(kDash, tr("Measuring…"));
    }
    cpu->setHistory(model_.history(Metric::CPU).values(), false);

    PanelFigure* memory = figures_.at(QStringLiteral("memory"));
    if (r.memory) {
        const double used = r.memory->usedFraction();
        memory->setFigure(
            MetricFormat::percent(used),
            tr("%1 of %2")
                .arg(MetricFormat::bytes(r.memory->used()), MetricFormat::bytes(r.memory->total)),
            level(MenuBarStat::Memory, used));
        memory->setHistory(model_.history(Metric::Memory).values(), false);
    } else {
        memory->setAbsent(tr("The system does not report its memory."));
    }

    PanelFigure* gpu = figures_.at(QStringLiteral("gpu"));
    if (r.gpu) {
        gpu->setFigure(MetricFormat::percent(*r.gpu), tr("The busiest graphics processor"),
                       level(MenuBarStat::Gpu, *r.gpu));
        gpu->setHistory(model_.history(Metric::GPU).values(), false);
    } else {
        gpu->setAbsent(noGpuLoadSentence(r.gpuAsleep));
    }
}

void MonitorPanelPage::renderNetwork() {
    const SystemReading& r = *model_.latest();
    const SessionTotals& totals = model_.sessionTotals();
    auto rate = [this, &r](const QString& name, double perSecond, const QString& detail,
                           Metric metric) {
        PanelFigure* f = figures_.at(name);
        if (!r.network) {
            f->setAbsent(tr("The system does not report its network traffic."));
            return;
        }
        f->setFigure(MetricFormat::rate(perSecond), detail);
        f->setHistory(model_.history(metric).values(), true);
    };
    rate(QStringLiteral("download"), r.network ? r.network->firstPerSecond : 0.0,
         tr("%1 this session").arg(MetricFormat::bytes(totals.received)), Metric::NetworkIn);
    rate(QStringLiteral("upload"), r.network ? r.network->secondPerSecond : 0.0,
         tr("%1 this session").arg(MetricFormat::bytes(totals.sent)), Metric::NetworkOut);

    PanelFigure* disk = figures_.at(QStringLiteral("disk"));
    if (!r.startupDisk) {
        disk->setAbsent(tr("The startup disk's space can't be read."));
        return;
    }
    QString detail = tr("of %1").arg(MetricFormat::bytes(r.startupDisk->total));
    if (r.disk) {
        detail += tr(" · Read %1 · Write %2")
                      .arg(MetricFormat::rate(r.disk->firstPerSecond),
                           MetricFormat::rate(r.disk->secondPerSecond));
    }
    disk->setFigure(tr("%1 free").arg(MetricFormat::bytes(r.startupDisk->free)), detail);
}

void MonitorPanelPage::renderBattery() {
    const SystemReading& r = *model_.latest();
    PanelFigure* battery = figures_.at(QStringLiteral("battery"));
    if (!r.battery) {
        battery->setAbsent(noBatterySentence());
        return;
    }
    battery->setFigure(MetricFormat::percent(r.battery->charge), r.battery->statusLine(),
                       level(MenuBarStat::Battery, r.battery->charge));
    battery->setHistory(model_.history(Metric::Battery).values(), false);
}

} // namespace tarvik
