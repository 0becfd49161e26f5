#pragma once

#include <QString>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace tarvik {

// One core's cumulative ticks. Linux counts them in 64 bits; differences are taken modulo 2^64,
// so a counter that wraps still gives the right difference.
struct CPUTicks {
    std::uint64_t user = 0;
    std::uint64_t system = 0;
    std::uint64_t idle = 0;
    std::uint64_t nice = 0;
};

using CPUSnapshot = std::vector<CPUTicks>;

struct CPUUsage {
    double user = 0;
    double system = 0;
    double total() const { return user + system; }
    static CPUUsage zero() { return {}; }
};

struct CPUTopology {
    int logicalCores = 0;
    std::optional<int> performance;
    std::optional<int> efficiency;
    QString summary() const;
};

// What /proc/stat gives the sampler: per-core ticks (iowait counts as idle; irq, softirq and
// steal as system; guest time is already inside user and nice) and the boot time.
struct ProcStat {
    CPUSnapshot cores;
    std::optional<std::int64_t> bootTime; // seconds since the epoch
};
ProcStat parseProcStat(std::string_view text);

// Load of one core between two snapshots; a total of zero gives zero.
CPUUsage cpuUsage(const CPUTicks& before, const CPUTicks& now);
// Per-core loads and the machine load from the sums over all cores. Empty when the core lists
// differ (a CPU went offline or came online): the next sample starts afresh.
struct CPULoads {
    CPUUsage total;
    std::vector<CPUUsage> perCore;
};
std::optional<CPULoads> cpuLoads(const CPUSnapshot& before, const CPUSnapshot& now);

// Parses a kernel CPU list such as "0-3,8,10-11" into its count; empty when malformed.
std::optional<int> countCpuList(std::string_view list);
// Logical cores from /sys/devices/system/cpu/present; hybrid Intel parts expose
// /sys/devices/cpu_core/cpus and /sys/devices/cpu_atom/cpus for the two kinds of core.
CPUTopology readTopology(const std::filesystem::path& root, int fallbackCores);

} // namespace tarvik
