#pragma once

#include "core/speedtest/speed_test_math.h"
#include "core/speedtest/speed_test_result.h"

#include <atomic>
#include <functional>
#include <optional>

namespace tarvik {

// Runs one speed test: server discovery, idle pings, then download and upload over separate
// connections that re-issue their requests until the phase ends, sampled every 200 ms, with
// latency probed on one more connection meanwhile. Blocks the calling (worker) thread, running
// the network on that thread's own event loop. Throws SpeedTestError; returns nothing when
// cancelled through `cancel`.
class SpeedTestEngine {
public:
    explicit SpeedTestEngine(SpeedTestConfiguration configuration = {});

    std::optional<SpeedTestResult>
    run(const std::optional<QString>& connection,
        const std::function<void(const SpeedTestProgress&)>& progress,
        const std::atomic<bool>* cancel = nullptr) const;

private:
    SpeedTestConfiguration config_;
};

} // namespace tarvik
