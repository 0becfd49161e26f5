#include "core/monitor/process_order.h"

#include <QString>
#include <algorithm>
#include <cmath>

namespace tarvik {

double clampedMonitorInterval(std::optional<double> preference) {
    if (!preference || !std::isfinite(*preference) || *preference <= 0) {
        return 2.0;
    }
    return std::clamp(*preference, 1.0, 10.0);
}

double samplingInterval(double clampedInterval, bool onlyMenuBarLabel) {
    return onlyMenuBarLabel && clampedInterval <= 5.0 ? 5.0 : clampedInterval;
}

QString title(ProcessSort sort) {
    switch (sort) {
    case ProcessSort::CPU:
        return QStringLiteral("CPU");
    case ProcessSort::Memory:
        return QStringLiteral("Memory");
    case ProcessSort::Name:
        return QStringLiteral("Name");
    case ProcessSort::PID:
        return QStringLiteral("Process ID");
    }
    return {};
}

std::optional<ProcessSort> processSortFromKey(std::string_view key) {
    if (key == "cpu") {
        return ProcessSort::CPU;
    }
    if (key == "memory") {
        return ProcessSort::Memory;
    }
    if (key == "name") {
        return ProcessSort::Name;
    }
    if (key == "pid") {
        return ProcessSort::PID;
    }
    return std::nullopt;
}

void sortProcesses(std::vector<ProcessUsage>& processes, ProcessSort sort) {
    const auto byName = [](const ProcessUsage& a, const ProcessUsage& b) {
        const int c = QString::compare(QString::fromStdString(a.name),
                                       QString::fromStdString(b.name), Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a.pid < b.pid;
    };
    std::sort(processes.begin(), processes.end(),
              [sort, &byName](const ProcessUsage& a, const ProcessUsage& b) {
                  switch (sort) {
                  case ProcessSort::CPU:
                      if (a.cpuPercent != b.cpuPercent) {
                          return a.cpuPercent > b.cpuPercent;
                      }
                      break;
                  case ProcessSort::Memory:
                      if (a.memory != b.memory) {
                          return a.memory > b.memory;
                      }
                      break;
                  case ProcessSort::Name:
                      return byName(a, b);
                  case ProcessSort::PID:
                      break;
                  }
                  return a.pid < b.pid;
              });
}

std::uint64_t totalProcessMemory(const std::vector<ProcessUsage>& processes) {
    std::uint64_t sum = 0;
    for (const auto& p : processes) {
        sum += p.memory;
    }
    return sum;
}

} // namespace tarvik
