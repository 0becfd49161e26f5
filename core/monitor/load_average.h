#pragma once

#include <optional>
#include <string_view>

namespace tarvik {

struct LoadAverage {
    double one = 0;
    double five = 0;
    double fifteen = 0;
};

// The first three figures of /proc/loadavg; fewer than three gives no load average.
std::optional<LoadAverage> parseLoadAverage(std::string_view text);

} // namespace tarvik
