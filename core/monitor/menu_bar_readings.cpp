#include "core/monitor/menu_bar_readings.h"

#include "core/text/metric_format.h"
#include "core/text/qt_text.h"
#include "core/text/whole_number.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tarvik {
namespace {

const QString kDash = QStringLiteral("—");

MenuBarReading percentReading(MenuBarStat stat, std::optional<double> fraction) {
    const QString name = toQString(title(stat));
    if (!fraction) {
        return {stat, kDash, name + QStringLiteral(" not available"), std::nullopt};
    }
    const QString text = MetricFormat::percent(*fraction);
    return {stat, text, name + QLatin1Char(' ') + text, fraction};
}

MenuBarReading rateReading(MenuBarStat stat, std::optional<double> perSecond) {
    const QString name = toQString(title(stat));
    if (!perSecond) {
        return {stat, kDash, name + QStringLiteral(" not available"), std::nullopt};
    }
    // Bars of rates fill on a log scale from 1 KB/s to 100 MB/s.
    const double fraction =
        *perSecond < 1000 ? 0.0 : std::clamp(std::log10(*perSecond / 1000.0) / 5.0, 0.0, 1.0);
    return {stat, compactRate(*perSecond), name + QLatin1Char(' ') + MetricFormat::rate(*perSecond),
            fraction};
}

} // namespace

QString compactRate(double bytesPerSecond) {
    if (!(bytesPerSecond >= 1000.0)) {
        return QStringLiteral("0");
    }
    static constexpr const char* kUnits[] = {"K", "M", "G", "T"};
    double value = bytesPerSecond / 1000.0;
    std::size_t unit = 0;
    while (value >= 999.5 && unit + 1 < std::size(kUnits)) {
        value /= 1000.0;
        ++unit;
    }
    const int decimals = value < 9.95 ? 1 : 0;
    return QString::number(value, 'f', decimals) + QLatin1String(kUnits[unit]);
}

std::vector<MenuBarReading> menuBarReadings(const std::optional<SystemReading>& reading,
                                            const std::vector<MenuBarStat>& stats,
                                            const std::optional<AgentSessionReading>& agent) {
    std::vector<MenuBarReading> out;
    for (MenuBarStat stat : kAllMenuBarStats) {
        if (std::find(stats.begin(), stats.end(), stat) == stats.end()) {
            continue;
        }
        const SystemReading* r = reading ? &*reading : nullptr;
        switch (stat) {
        case MenuBarStat::Cpu:
            out.push_back(percentReading(
                stat,
                r && r->cpu ? std::optional(std::clamp(r->cpu->total(), 0.0, 1.0)) : std::nullopt));
            break;
        case MenuBarStat::Memory:
            out.push_back(percentReading(
                stat, r && r->memory ? std::optional(r->memory->usedFraction()) : std::nullopt));
            break;
        case MenuBarStat::Download:
            out.push_back(rateReading(
                stat, r && r->network ? std::optional(r->network->firstPerSecond) : std::nullopt));
            break;
        case MenuBarStat::Upload:
            out.push_back(rateReading(
                stat, r && r->network ? std::optional(r->network->secondPerSecond) : std::nullopt));
            break;
        case MenuBarStat::Gpu: {
            MenuBarReading g = percentReading(stat, r ? r->gpu : std::nullopt);
            if (r && !r->gpu && r->gpuAsleep) {
                g.words = QStringLiteral("GPU asleep");
            }
            out.push_back(g);
            break;
        }
        case MenuBarStat::Battery:
            out.push_back(percentReading(stat, r && r->battery ? std::optional(r->battery->charge)
                                                               : std::nullopt));
            break;
        case MenuBarStat::Agent:
            if (agent && agent->left) {
                MenuBarReading a = percentReading(stat, agent->left);
                a.words = QStringLiteral("%1 session %2% left")
                              .arg(agent->provider)
                              .arg(roundedNumber<qint64>(*agent->left * 100.0));
                out.push_back(a);
            } else {
                out.push_back({stat, kDash,
                               agent
                                   ? (agent->provider.isEmpty()
                                          ? agent->problem
                                          : agent->provider + QStringLiteral(": ") + agent->problem)
                                   : QStringLiteral("Agent usage not measured"),
                               std::nullopt});
            }
            break;
        }
    }
    return out;
}

} // namespace tarvik
