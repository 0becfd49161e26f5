#pragma once

#include "core/monitor/battery.h"
#include "core/monitor/disk.h"
#include "core/monitor/memory.h"
#include "core/monitor/system_reading.h"
#include "core/monitor/thermal.h"

#include <QString>
#include <optional>
#include <vector>

namespace tarvik {

struct HealthInput {
    std::optional<MemoryStats> memory;
    std::vector<double> recentCPU; // total CPU load fractions, oldest first
    std::optional<QString> topProcess;
    std::optional<ThermalLevel> thermal;
    std::optional<BatteryInfo> battery;
    std::optional<DiskUsage> disk;
    std::optional<double> uptime; // seconds
};

struct HealthIssue {
    enum class Severity { Warning, Critical };
    // What the issue's button does.
    enum class Remedy {
        ShowProcessesByMemory, // the process table, sorted by memory
        ShowProcessesByCPU,    // the process table, sorted by CPU
        OpenSystemJunk,
        ExplainRestart, // how to restart, in words
    };
    QString id;
    Severity severity = Severity::Warning;
    QString title;
    QString detail;
    QString symbol;
    std::optional<Remedy> remedy;
};

// The input from a reading, the recent CPU loads and, when the reading carried them, the
// processes (whose busiest one is named).
HealthInput healthInput(const SystemReading& reading, std::vector<double> recentCPU,
                        const std::vector<ProcessUsage>* processes);

QString title(HealthIssue::Remedy remedy);
QString rawValue(HealthIssue::Severity severity); // "warning", "critical"
QString rawValue(HealthIssue::Remedy remedy);     // "showProcessesByMemory", …
// The words "Time for a restart" shows when its button is pressed.
QString restartAdvice();

namespace SystemHealth {
// The issues the input shows, most severe first; equal severities keep the check order.
std::vector<HealthIssue> assess(const HealthInput& input);
} // namespace SystemHealth

} // namespace tarvik
