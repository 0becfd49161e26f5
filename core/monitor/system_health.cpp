#include "core/monitor/system_health.h"

#include "core/text/counts.h"
#include "core/text/metric_format.h"
#include "core/text/platform_words.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tarvik {
namespace {

QString wholePercent(double fraction) {
    return QString::number(std::lround(fraction * 100.0));
}

} // namespace

HealthInput healthInput(const SystemReading& reading, std::vector<double> recentCPU,
                        const std::vector<ProcessUsage>* processes) {
    HealthInput input;
    input.memory = reading.memory;
    input.recentCPU = std::move(recentCPU);
    if (processes != nullptr) {
        const auto busiest = std::max_element(processes->begin(), processes->end(),
                                              [](const ProcessUsage& a, const ProcessUsage& b) {
                                                  return a.cpuPercent < b.cpuPercent;
                                              });
        if (busiest != processes->end() && busiest->cpuPercent > 0) {
            input.topProcess = QString::fromStdString(busiest->name);
        }
    }
    input.thermal = reading.thermal;
    input.battery = reading.battery;
    input.disk = reading.startupDisk;
    input.uptime = reading.uptimeSeconds();
    return input;
}

QString rawValue(HealthIssue::Severity severity) {
    return severity == HealthIssue::Severity::Critical ? QStringLiteral("critical")
                                                       : QStringLiteral("warning");
}

QString rawValue(HealthIssue::Remedy remedy) {
    switch (remedy) {
    case HealthIssue::Remedy::ShowProcessesByMemory:
        return QStringLiteral("showProcessesByMemory");
    case HealthIssue::Remedy::ShowProcessesByCPU:
        return QStringLiteral("showProcessesByCPU");
    case HealthIssue::Remedy::OpenSystemJunk:
        return QStringLiteral("openSystemJunk");
    case HealthIssue::Remedy::ExplainRestart:
        return QStringLiteral("explainRestart");
    }
    return {};
}

QString title(HealthIssue::Remedy remedy) {
    switch (remedy) {
    case HealthIssue::Remedy::ShowProcessesByMemory:
        return QStringLiteral("Show by Memory");
    case HealthIssue::Remedy::ShowProcessesByCPU:
        return QStringLiteral("Show by CPU");
    case HealthIssue::Remedy::OpenSystemJunk:
        return QStringLiteral("Clean System Junk");
    case HealthIssue::Remedy::ExplainRestart:
        return QStringLiteral("How to Restart");
    }
    return {};
}

QString restartAdvice() {
    return QStringLiteral("Save your work, then choose Restart from the power menu of your "
                          "desktop (usually at the top or bottom right), or run "
                          "\"systemctl reboot\" in ") +
           words::aTerminal() + QStringLiteral(".");
}

std::vector<HealthIssue> SystemHealth::assess(const HealthInput& in) {
    using Severity = HealthIssue::Severity;
    using Remedy = HealthIssue::Remedy;
    std::vector<HealthIssue> out;
    if (in.memory) {
        const MemoryPressure pressure = in.memory->pressure();
        if (pressure == MemoryPressure::Critical) {
            out.push_back({QStringLiteral("memory"), Severity::Critical,
                           QStringLiteral("Memory pressure is high"),
                           words::theSystemOpening() +
                               QStringLiteral(" is compressing and swapping heavily. Quit apps "
                                              "you aren't using."),
                           QStringLiteral("memorychip"), Remedy::ShowProcessesByMemory});
        } else if (pressure == MemoryPressure::Warning) {
            out.push_back({QStringLiteral("memory"), Severity::Warning,
                           QStringLiteral("Memory is getting tight"),
                           MetricFormat::bytes(in.memory->compressed) +
                               QStringLiteral(" is compressed to make room."),
                           QStringLiteral("memorychip"), Remedy::ShowProcessesByMemory});
        }
        if (in.memory->total >= 1 &&
            static_cast<double>(in.memory->swapUsed) / static_cast<double>(in.memory->total) >
                0.25) {
            out.push_back(
                {QStringLiteral("swap"), Severity::Warning, QStringLiteral("Heavy swap use"),
                 MetricFormat::bytes(in.memory->swapUsed) +
                     QStringLiteral(" of memory has been written to disk, which slows "
                                    "things down."),
                 QStringLiteral("arrow.left.arrow.right"), Remedy::ShowProcessesByMemory});
        }
    }
    if (in.recentCPU.size() >= 5) {
        const double mean = std::accumulate(in.recentCPU.begin(), in.recentCPU.end(), 0.0) /
                            static_cast<double>(in.recentCPU.size());
        if (mean > 0.85) {
            QString detail =
                QStringLiteral("Running ") + wholePercent(mean) + QStringLiteral("% for a while.");
            if (in.topProcess) {
                detail +=
                    QLatin1Char(' ') + *in.topProcess + QStringLiteral(" is the busiest process.");
            }
            out.push_back({QStringLiteral("cpu"), Severity::Warning,
                           QStringLiteral("The CPU has been busy"), detail, QStringLiteral("cpu"),
                           Remedy::ShowProcessesByCPU});
        }
    }
    if (in.thermal &&
        (*in.thermal == ThermalLevel::Serious || *in.thermal == ThermalLevel::Critical)) {
        out.push_back(
            {QStringLiteral("thermal"),
             *in.thermal == ThermalLevel::Critical ? Severity::Critical : Severity::Warning,
             QStringLiteral("Your ") + words::computer() + QStringLiteral(" is running hot"),
             words::theSystemOpening() +
                 QStringLiteral(" is slowing things down to cool off. Check for busy "
                                "processes and blocked vents."),
             QStringLiteral("thermometer.high"), Remedy::ShowProcessesByCPU});
    }
    if (in.disk && in.disk->total >= 1 &&
        static_cast<double>(in.disk->free) / static_cast<double>(in.disk->total) < 0.1) {
        out.push_back({QStringLiteral("disk"), Severity::Warning,
                       QStringLiteral("Startup disk is almost full"),
                       QStringLiteral("Only ") + MetricFormat::bytes(in.disk->free) +
                           QStringLiteral(" left. ") + words::theSystemOpening() +
                           QStringLiteral(" needs free space for memory swap and updates."),
                       QStringLiteral("internaldrive"), Remedy::OpenSystemJunk});
    }
    if (in.battery && in.battery->health && *in.battery->health < 0.8) {
        QString detail = QStringLiteral("It holds ") + wholePercent(*in.battery->health) +
                         QStringLiteral("% of its original charge");
        if (in.battery->cycleCount) {
            detail +=
                QStringLiteral(" after ") + countOf(*in.battery->cycleCount, u"cycle", u"cycles");
        }
        detail += QStringLiteral(". Consider a service.");
        out.push_back({QStringLiteral("battery-health"), Severity::Warning,
                       QStringLiteral("Battery is wearing out"), detail,
                       QStringLiteral("battery.25"), std::nullopt});
    }
    if (in.battery && !in.battery->isCharging && in.battery->source == PowerSource::Battery &&
        in.battery->charge < 0.1) {
        out.push_back({QStringLiteral("battery-low"), Severity::Critical,
                       QStringLiteral("Battery is almost empty"),
                       wholePercent(in.battery->charge) + QStringLiteral("% left. Plug in soon."),
                       QStringLiteral("battery.0"), std::nullopt});
    }
    if (in.uptime && *in.uptime > 1'209'600.0) {
        out.push_back(
            {QStringLiteral("uptime"), Severity::Warning, QStringLiteral("Time for a restart"),
             QStringLiteral("Your ") + words::computer() + QStringLiteral(" has been up for ") +
                 MetricFormat::duration(*in.uptime) +
                 QStringLiteral(". Restarting clears out temporary files and stuck "
                                "processes."),
             QStringLiteral("arrow.clockwise"), Remedy::ExplainRestart});
    }
    std::stable_sort(out.begin(), out.end(), [](const HealthIssue& a, const HealthIssue& b) {
        return a.severity == Severity::Critical && b.severity == Severity::Warning;
    });
    return out;
}

} // namespace tarvik
