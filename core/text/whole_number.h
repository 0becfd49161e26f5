#pragma once

// Numbers from outside (a service's JSON, a damaged file) as integers. A plain cast of a double
// that does not fit, or of NaN, is undefined behaviour; these give the nearest value that fits.
#include <cmath>
#include <concepts>
#include <limits>

namespace tarvik {

// `value` without its fraction, held to Int's range; NaN gives 0.
template <std::integral Int> Int wholeNumber(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    // The power of two just past Int's maximum, which as a double would round up to it.
    constexpr double kPastTop = static_cast<double>(std::numeric_limits<Int>::max() / 2 + 1) * 2.0;
    if (value >= kPastTop) {
        return std::numeric_limits<Int>::max();
    }
    if (value <= static_cast<double>(std::numeric_limits<Int>::min())) {
        return std::numeric_limits<Int>::min();
    }
    return static_cast<Int>(value);
}

// `value` rounded half away from zero, held to Int's range; NaN gives 0.
template <std::integral Int> Int roundedNumber(double value) {
    return wholeNumber<Int>(std::round(value));
}

} // namespace tarvik
