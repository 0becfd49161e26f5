#pragma once

#include "core/monitor/process_tracker.h"

#include <QString>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tarvik {

enum class MonitorClient { Window, MenuPanel, MenuBarLabel };

// The sampling interval from "monitorInterval": unset or ≤ 0 is 2 s, then clamped to 1…10 s.
double clampedMonitorInterval(std::optional<double> preference);
// With only the tray label to feed, sampling slows to every 5 s at most.
double samplingInterval(double clampedInterval, bool onlyMenuBarLabel);

struct SessionTotals {
    std::uint64_t received = 0;
    std::uint64_t sent = 0;
    std::uint64_t read = 0;
    std::uint64_t written = 0;
};

// The figures the model keeps a short history of.
enum class Metric { CPU, Memory, NetworkIn, NetworkOut, DiskRead, DiskWrite, GPU, Battery, Load };

// The process table's order.
enum class ProcessSort { CPU, Memory, Name, PID };
QString title(ProcessSort sort);
std::optional<ProcessSort> processSortFromKey(std::string_view key); // "cpu", "memory", …
// Busiest first for CPU and memory, A to Z for names, lowest first for pids; ties by pid.
void sortProcesses(std::vector<ProcessUsage>& processes, ProcessSort sort);
std::uint64_t totalProcessMemory(const std::vector<ProcessUsage>& processes);

} // namespace tarvik
