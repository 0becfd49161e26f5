#include "core/monitor/process_tracker.h"

#include "core/monitor/process_naming.h"

namespace tarvik {

std::vector<ProcessUsage> ProcessTracker::update(const std::vector<ProcessSample>& samples,
                                                 std::int64_t now) {
    const std::int64_t elapsed = lastUpdate_ && now > *lastUpdate_ ? now - *lastUpdate_ : 0;
    std::unordered_map<Key, std::uint64_t, KeyHash> current;
    current.reserve(samples.size());
    std::vector<ProcessUsage> out;
    out.reserve(samples.size());
    for (const ProcessSample& s : samples) {
        const Key key{s.pid, s.startTime};
        current[key] = s.cpuTime;
        ProcessUsage& u = out.emplace_back();
        u.pid = s.pid;
        u.name = s.name;
        u.path = s.path;
        u.memory = s.memory;
        u.startTime = s.startTime;
        u.uid = s.uid;
        u.kernelThread = s.kernelThread;
        if (s.path) {
            u.appBundlePath = ProcessNaming::appBundlePath(*s.path);
        }
        const auto before = previous_.find(key);
        if (elapsed > 0 && before != previous_.end() && before->second <= s.cpuTime) {
            u.cpuPercent = static_cast<double>(s.cpuTime - before->second) /
                           static_cast<double>(elapsed) * 100.0;
        }
    }
    previous_ = std::move(current); // processes that ended are forgotten
    lastUpdate_ = now;
    return out;
}

void ProcessTracker::reset() {
    previous_.clear();
    lastUpdate_.reset();
}

} // namespace tarvik
