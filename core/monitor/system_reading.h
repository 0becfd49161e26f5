#pragma once

#include "core/monitor/battery.h"
#include "core/monitor/cpu.h"
#include "core/monitor/disk.h"
#include "core/monitor/load_average.h"
#include "core/monitor/memory.h"
#include "core/monitor/process_tracker.h"
#include "core/monitor/thermal.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace tarvik {

// Traffic since the previous reading: bytes per second, and the bytes themselves.
struct TransferRates {
    double firstPerSecond = 0;  // received / read
    double secondPerSecond = 0; // sent / written
    std::uint64_t firstBytes = 0;
    std::uint64_t secondBytes = 0;
};

// One finished snapshot of the machine. Every part may be missing on its own.
struct SystemReading {
    std::chrono::system_clock::time_point date;
    std::optional<CPUUsage> cpu; // absent on the first sample and after a resume
    std::vector<CPUUsage> perCore;
    std::optional<MemoryStats> memory;
    std::optional<TransferRates> network; // received, sent
    std::optional<TransferRates> disk;    // read, written
    std::optional<double> gpu;
    bool gpuAsleep = false;
    std::optional<LoadAverage> loadAverage;
    std::optional<ThermalLevel> thermal;
    std::optional<BatteryInfo> battery;
    std::optional<std::int64_t> bootTime;               // seconds since the epoch
    std::optional<DiskUsage> startupDisk;               // the file system holding the root
    std::optional<std::vector<ProcessUsage>> processes; // when the sample asked for them

    std::optional<double> uptimeSeconds() const;
};

} // namespace tarvik
