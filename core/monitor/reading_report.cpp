#include "core/monitor/reading_report.h"

#include "core/text/metric_format.h"

#include <QJsonArray>

namespace tarvik {
namespace {

const QString kNotReported = QStringLiteral("Not reported");

QJsonValue orNull(const std::optional<double>& v) {
    return v ? QJsonValue(*v) : QJsonValue(QJsonValue::Null);
}

QJsonValue transferJson(const std::optional<TransferRates>& t, const char* first,
                        const char* second) {
    if (!t) {
        return QJsonValue(QJsonValue::Null);
    }
    return QJsonObject{
        {QLatin1String(first) + QStringLiteral("PerSecond"), t->firstPerSecond},
        {QLatin1String(second) + QStringLiteral("PerSecond"), t->secondPerSecond},
        {QLatin1String(first) + QStringLiteral("Bytes"), static_cast<double>(t->firstBytes)},
        {QLatin1String(second) + QStringLiteral("Bytes"), static_cast<double>(t->secondBytes)},
    };
}

} // namespace

QString noBatterySentence() {
    return QStringLiteral("This computer has no battery.");
}

QString noGpuLoadSentence(bool gpuAsleep) {
    return gpuAsleep ? QStringLiteral("Asleep: the graphics card is powered down and left alone.")
                     : QStringLiteral("No graphics processor reports its load.");
}

std::vector<SummaryRow> describeReading(const SystemReading& r, const CPUTopology& topology) {
    std::vector<SummaryRow> rows;
    QString cpu =
        r.cpu ? QStringLiteral("%1 (user %2, system %3)")
                    .arg(MetricFormat::percent(r.cpu->total()), MetricFormat::percent(r.cpu->user),
                         MetricFormat::percent(r.cpu->system))
              : QStringLiteral("Measuring…");
    rows.push_back({QStringLiteral("CPU"), cpu + QStringLiteral(" · ") + topology.summary()});
    if (r.memory) {
        const MemoryStats& m = *r.memory;
        rows.push_back(
            {QStringLiteral("Memory"),
             QStringLiteral("%1 used of %2 (%3) · app %4 · cached %5 · compressed %6")
                 .arg(MetricFormat::bytes(m.used()), MetricFormat::bytes(m.total),
                      MetricFormat::percent(m.usedFraction()), MetricFormat::bytes(m.appMemory()),
                      MetricFormat::bytes(m.cachedFiles()), MetricFormat::bytes(m.compressed))});
        rows.push_back({QStringLiteral("Pressure"), title(m.pressure())});
        rows.push_back({QStringLiteral("Swap"), m.swapTotal > 0
                                                    ? QStringLiteral("%1 used of %2")
                                                          .arg(MetricFormat::bytes(m.swapUsed),
                                                               MetricFormat::bytes(m.swapTotal))
                                                    : QStringLiteral("None")});
    } else {
        rows.push_back({QStringLiteral("Memory"), kNotReported});
    }
    rows.push_back({QStringLiteral("Network"),
                    r.network ? QStringLiteral("↓ %1 · ↑ %2")
                                    .arg(MetricFormat::rate(r.network->firstPerSecond),
                                         MetricFormat::rate(r.network->secondPerSecond))
                              : kNotReported});
    rows.push_back(
        {QStringLiteral("Disk"), r.disk ? QStringLiteral("read %1 · write %2")
                                              .arg(MetricFormat::rate(r.disk->firstPerSecond),
                                                   MetricFormat::rate(r.disk->secondPerSecond))
                                        : kNotReported});
    rows.push_back({QStringLiteral("GPU"), r.gpu ? MetricFormat::percent(*r.gpu)
                                           : r.gpuAsleep
                                               ? QStringLiteral("Asleep")
                                               : QStringLiteral("No GPU reports its load")});
    if (r.battery) {
        QString b = MetricFormat::percent(r.battery->charge) + QStringLiteral(" · ") +
                    r.battery->statusLine();
        if (r.battery->health) {
            b += QStringLiteral(" · health ") + MetricFormat::percent(*r.battery->health);
        }
        rows.push_back({QStringLiteral("Battery"), b});
    } else {
        rows.push_back({QStringLiteral("Battery"), QStringLiteral("None")});
    }
    rows.push_back(
        {QStringLiteral("Load average"), r.loadAverage ? QStringLiteral("%1 %2 %3")
                                                             .arg(r.loadAverage->one, 0, 'f', 2)
                                                             .arg(r.loadAverage->five, 0, 'f', 2)
                                                             .arg(r.loadAverage->fifteen, 0, 'f', 2)
                                                       : kNotReported});
    rows.push_back({QStringLiteral("Temperature"), r.thermal ? title(*r.thermal) : kNotReported});
    const auto up = r.uptimeSeconds();
    rows.push_back({QStringLiteral("Uptime"), up ? MetricFormat::duration(*up) : kNotReported});
    return rows;
}

QJsonObject toJson(const SystemReading& r, const CPUTopology& topology) {
    QJsonObject o;
    o[QStringLiteral("date")] =
        static_cast<double>(
            std::chrono::duration_cast<std::chrono::milliseconds>(r.date.time_since_epoch())
                .count()) /
        1000.0;
    QJsonObject topo{{QStringLiteral("logicalCores"), topology.logicalCores},
                     {QStringLiteral("summary"), topology.summary()}};
    if (topology.performance && topology.efficiency) {
        topo[QStringLiteral("performance")] = *topology.performance;
        topo[QStringLiteral("efficiency")] = *topology.efficiency;
    }
    o[QStringLiteral("topology")] = topo;
    if (r.cpu) {
        QJsonArray cores;
        for (const auto& c : r.perCore) {
            cores.append(QJsonObject{{QStringLiteral("user"), c.user},
                                     {QStringLiteral("system"), c.system}});
        }
        o[QStringLiteral("cpu")] = QJsonObject{{QStringLiteral("user"), r.cpu->user},
                                               {QStringLiteral("system"), r.cpu->system},
                                               {QStringLiteral("total"), r.cpu->total()},
                                               {QStringLiteral("cores"), cores}};
    } else {
        o[QStringLiteral("cpu")] = QJsonValue(QJsonValue::Null);
    }
    if (r.memory) {
        const MemoryStats& m = *r.memory;
        auto d = [](std::int64_t v) {
            return static_cast<double>(v);
        };
        o[QStringLiteral("memory")] = QJsonObject{
            {QStringLiteral("total"), d(m.total)},
            {QStringLiteral("free"), d(m.free)},
            {QStringLiteral("used"), d(m.used())},
            {QStringLiteral("available"), d(m.available())},
            {QStringLiteral("app"), d(m.appMemory())},
            {QStringLiteral("cached"), d(m.cachedFiles())},
            {QStringLiteral("wired"), d(m.wired)},
            {QStringLiteral("compressed"), d(m.compressed)},
            {QStringLiteral("swapUsed"), d(m.swapUsed)},
            {QStringLiteral("swapTotal"), d(m.swapTotal)},
            {QStringLiteral("usedFraction"), m.usedFraction()},
            {QStringLiteral("pressure"), title(m.pressure()).toLower()},
            {QStringLiteral("pressureReportedByKernel"), m.reportedPressure.has_value()},
        };
    } else {
        o[QStringLiteral("memory")] = QJsonValue(QJsonValue::Null);
    }
    o[QStringLiteral("network")] = transferJson(r.network, "received", "sent");
    o[QStringLiteral("disk")] = transferJson(r.disk, "read", "written");
    o[QStringLiteral("gpu")] = orNull(r.gpu);
    o[QStringLiteral("gpuAsleep")] = r.gpuAsleep;
    if (r.loadAverage) {
        o[QStringLiteral("loadAverage")] =
            QJsonArray{r.loadAverage->one, r.loadAverage->five, r.loadAverage->fifteen};
    } else {
        o[QStringLiteral("loadAverage")] = QJsonValue(QJsonValue::Null);
    }
    o[QStringLiteral("thermal")] =
        r.thermal ? QJsonValue(title(*r.thermal).toLower()) : QJsonValue(QJsonValue::Null);
    if (r.battery) {
        const BatteryInfo& b = *r.battery;
        auto opt = [](const auto& v) {
            return v ? QJsonValue(static_cast<double>(*v)) : QJsonValue(QJsonValue::Null);
        };
        o[QStringLiteral("battery")] = QJsonObject{
            {QStringLiteral("charge"), b.charge},
            {QStringLiteral("isCharging"), b.isCharging},
            {QStringLiteral("source"), b.source == PowerSource::AcPower ? "ac" : "battery"},
            {QStringLiteral("status"), b.statusText()},
            {QStringLiteral("minutesRemaining"), opt(b.minutesRemaining)},
            {QStringLiteral("cycleCount"), opt(b.cycleCount)},
            {QStringLiteral("health"), opt(b.health)},
            {QStringLiteral("temperature"), opt(b.temperature)},
        };
    } else {
        o[QStringLiteral("battery")] = QJsonValue(QJsonValue::Null);
    }
    o[QStringLiteral("bootTime")] =
        r.bootTime ? QJsonValue(static_cast<double>(*r.bootTime)) : QJsonValue(QJsonValue::Null);
    o[QStringLiteral("uptimeSeconds")] = orNull(r.uptimeSeconds());
    return o;
}

} // namespace tarvik
