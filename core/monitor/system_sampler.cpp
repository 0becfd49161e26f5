#include "core/monitor/system_sampler.h"

#include "core/sys/system_files.h"

#include <ctime>
#include <system_error>

namespace tarvik {
namespace {

std::int64_t clockNs(clockid_t id) {
    timespec ts{};
    ::clock_gettime(id, &ts);
    return static_cast<std::int64_t>(ts.tv_sec) * 1'000'000'000 + ts.tv_nsec;
}

// More sleep than this between two samples means the machine was suspended.
constexpr std::int64_t kSuspendGapNs = 1'000'000'000;

TransferRates rates(std::uint64_t first, std::uint64_t second, double elapsed) {
    TransferRates r;
    r.firstBytes = first;
    r.secondBytes = second;
    if (elapsed > 0) {
        r.firstPerSecond = static_cast<double>(first) / elapsed;
        r.secondPerSecond = static_cast<double>(second) / elapsed;
    }
    return r;
}

} // namespace

SamplerClocks SamplerClocks::now() {
    return {clockNs(CLOCK_MONOTONIC), clockNs(CLOCK_BOOTTIME)};
}

std::optional<double> SystemReading::uptimeSeconds() const {
    if (!bootTime) {
        return std::nullopt;
    }
    const auto since = std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch());
    return static_cast<double>(since.count() - *bootTime);
}

std::int64_t readZramUsed(const std::filesystem::path& root) {
    std::int64_t used = 0;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(root / "sys/block", ec)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with("zram")) {
            continue;
        }
        const auto stat = platform::readSmallFile(root, "sys/block/" + name + "/mm_stat");
        if (!stat) {
            continue;
        }
        // orig_data_size compr_data_size mem_used_total …
        std::string_view s = *stat;
        for (int field = 0; field < 3; ++field) {
            const auto begin = s.find_first_not_of(' ');
            if (begin == std::string_view::npos) {
                s = {};
                break;
            }
            s.remove_prefix(begin);
            const auto end = s.find(' ');
            if (field == 2) {
                used += platform::parseInteger(s.substr(0, end)).value_or(0);
            }
            s = end == std::string_view::npos ? std::string_view{} : s.substr(end);
        }
    }
    return used;
}

SystemSampler::SystemSampler(SamplerOptions options) : options_(std::move(options)) {
    const auto stat = platform::readSmallFile(options_.root, "proc/stat");
    const int cores = stat ? static_cast<int>(parseProcStat(*stat).cores.size()) : 0;
    topology_ = readTopology(options_.root, cores);
    gpu_ = options_.gpu ? options_.gpu(options_.root) : std::make_unique<GpuMonitor>(options_.root);
}

SystemSampler::~SystemSampler() = default;

void SystemSampler::resetBaselines() {
    lastTime_.reset();
    lastCPU_.clear();
    lastNetwork_.reset();
    lastDisk_.reset();
}

SystemReading SystemSampler::sample(bool includeProcesses) {
    const auto& root = options_.root;
    SystemReading r;
    r.date = std::chrono::system_clock::now();

    // 1. Elapsed time; a suspend since the last sample starts everything afresh, so rates
    // neither spike (counters moved over hours) nor freeze.
    const SamplerClocks now = options_.clocks();
    double elapsed = 0;
    if (lastTime_) {
        const std::int64_t awake = now.monotonicNs - lastTime_->monotonicNs;
        const std::int64_t total = now.boottimeNs - lastTime_->boottimeNs;
        if (total - awake > kSuspendGapNs) {
            resetBaselines();
        } else if (awake > 0) {
            elapsed = static_cast<double>(awake) / 1e9;
        }
    }
    lastTime_ = now;

    // 2. CPU, and the boot time from the same file.
    if (const auto text = platform::readSmallFile(root, "proc/stat")) {
        ProcStat stat = parseProcStat(*text);
        if (auto loads = cpuLoads(lastCPU_, stat.cores)) {
            r.cpu = loads->total;
            r.perCore = std::move(loads->perCore);
        }
        lastCPU_ = std::move(stat.cores);
        r.bootTime = stat.bootTime;
    } else {
        lastCPU_.clear();
    }

    // 3. Memory.
    if (const auto text = platform::readSmallFile(root, "proc/meminfo")) {
        r.memory = memoryFromMeminfo(platform::parseMeminfo(*text), readZramUsed(root));
        if (r.memory) {
            if (const auto psi = platform::readSmallFile(root, "proc/pressure/memory")) {
                r.memory->reportedPressure = parseMemoryPressure(*psi);
            }
        }
    }

    // 4. Network.
    if (auto counters = readNetworkCounters(root)) {
        const ByteDelta moved = lastNetwork_ ? networkDelta(*lastNetwork_, *counters) : ByteDelta{};
        r.network = rates(moved.first, moved.second, elapsed);
        lastNetwork_ = std::move(counters);
    } else {
        lastNetwork_.reset();
    }

    // 5. Disk.
    if (const auto disk = readDiskCounters(root)) {
        const DiskIOCounters moved = lastDisk_ ? diskDelta(*lastDisk_, *disk) : DiskIOCounters{};
        r.disk = rates(moved.read, moved.written, elapsed);
        lastDisk_ = disk;
    } else {
        lastDisk_.reset();
    }

    // 6. GPU.
    const GpuReading gpu = gpu_->read(now.monotonicNs);
    r.gpu = gpu.load;
    r.gpuAsleep = gpu.asleep;

    // 7. Load average, thermal level, battery.
    if (const auto text = platform::readSmallFile(root, "proc/loadavg")) {
        r.loadAverage = parseLoadAverage(*text);
    }
    r.thermal = readThermalLevel(root);
    r.battery = readBattery(root);
    r.startupDisk = readDiskUsage(root);

    // 8. Processes, when asked for; a sample without them leaves the tracker as it was.
    if (includeProcesses) {
        r.processes = processes_.update(readProcesses({root}), now.monotonicNs);
    }
    return r;
}

void SystemSampler::resetProcesses() {
    processes_.reset();
}

} // namespace tarvik
