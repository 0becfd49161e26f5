#pragma once

#include "core/monitor/disk.h"
#include "core/monitor/gpu/gpu_source.h"
#include "core/monitor/network.h"
#include "core/monitor/process_tracker.h"
#include "core/monitor/system_reading.h"

#include <filesystem>
#include <functional>

namespace tarvik {

// The two kernel clocks the sampler compares: CLOCK_MONOTONIC stops while the machine sleeps,
// CLOCK_BOOTTIME does not.
struct SamplerClocks {
    std::int64_t monotonicNs = 0;
    std::int64_t boottimeNs = 0;
    static SamplerClocks now();
};

struct SamplerOptions {
    std::filesystem::path root = "/";
    std::function<SamplerClocks()> clocks = SamplerClocks::now;
    // Probed GPU sources; empty means probe the machine under `root`.
    std::function<std::unique_ptr<GpuMonitor>(const std::filesystem::path&)> gpu;
};

// Takes one snapshot at a time and turns counters into rates against the previous one.
// Not re-entrant: one sample at a time.
class SystemSampler {
public:
    explicit SystemSampler(SamplerOptions options = {});
    ~SystemSampler();

    SystemReading sample(bool includeProcesses = false);
    const CPUTopology& topology() const { return topology_; }
    // Forget the previous counters, so the next rates start afresh (after a resume from sleep).
    void resetBaselines();
    // Forget every process's previous CPU time.
    void resetProcesses();

private:
    SamplerOptions options_;
    CPUTopology topology_;
    std::unique_ptr<GpuMonitor> gpu_;
    std::optional<SamplerClocks> lastTime_;
    CPUSnapshot lastCPU_;
    std::optional<NetworkCounters> lastNetwork_;
    std::optional<DiskIOCounters> lastDisk_;
    ProcessTracker processes_;
};

// Memory the zram swap devices use for their compressed pages (mm_stat's third field).
std::int64_t readZramUsed(const std::filesystem::path& root);

} // namespace tarvik
