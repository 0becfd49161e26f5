#pragma once

#include "core/monitor/process_sample.h"

#include <unordered_map>

namespace tarvik {

// What the process table shows for one process.
struct ProcessUsage {
    std::int32_t pid = 0;
    std::string name;
    std::optional<std::string> path;
    double cpuPercent = 0; // of one core: a process busy on two cores shows 200
    std::uint64_t memory = 0;
    std::uint64_t startTime = 0;
    std::uint32_t uid = 0;
    bool kernelThread = false;
    // The enclosing application bundle ("….app") of the executable, if any.
    std::optional<std::string> appBundlePath;
};

// Turns cumulative CPU time into a share between two samples. A process is known by its pid
// together with its start time, so a reused pid counts as a new process.
class ProcessTracker {
public:
    struct Key {
        std::int32_t pid = 0;
        std::uint64_t startTime = 0;
        bool operator==(const Key&) const = default;
    };

    // `now` is monotonic nanoseconds. The result is in the order of `samples`.
    std::vector<ProcessUsage> update(const std::vector<ProcessSample>& samples, std::int64_t now);
    void reset();

private:
    struct KeyHash {
        std::size_t operator()(const Key& k) const {
            return std::hash<std::uint64_t>()((static_cast<std::uint64_t>(k.pid) << 40) ^
                                              k.startTime);
        }
    };
    std::unordered_map<Key, std::uint64_t, KeyHash> previous_;
    std::optional<std::int64_t> lastUpdate_;
};

} // namespace tarvik
