#include "core/text/metric_format.h"

#include <array>
#include <cmath>

namespace tarvik::MetricFormat {
namespace {

QString plural(std::int64_t n, const char* unit) {
    return QStringLiteral("%1 %2%3").arg(n).arg(QLatin1String(unit)).arg(n == 1 ? "" : "s");
}

} // namespace

QString bytes(std::int64_t count) {
    const double magnitude = std::fabs(static_cast<double>(count));
    if (magnitude < 1000.0) {
        return count == 1 ? QStringLiteral("1 byte") : QStringLiteral("%1 bytes").arg(count);
    }
    static constexpr std::array<const char*, 6> kUnits{"KB", "MB", "GB", "TB", "PB", "EB"};
    double value = static_cast<double>(count) / 1000.0;
    std::size_t unit = 0;
    while (std::fabs(value) >= 999.95 && unit + 1 < kUnits.size()) {
        value /= 1000.0;
        ++unit;
    }
    // One decimal below 100 of a unit keeps three significant digits, as file managers do.
    const int decimals = std::fabs(value) < 99.95 ? 1 : 0;
    return QStringLiteral("%1 %2").arg(value, 0, 'f', decimals).arg(QLatin1String(kUnits[unit]));
}

QString rate(double bytesPerSecond) {
    if (!(bytesPerSecond >= 1.0)) {
        return QStringLiteral("0 KB/s");
    }
    return bytes(static_cast<std::int64_t>(bytesPerSecond)) + QStringLiteral("/s");
}

QString duration(double seconds) {
    const auto minutes = seconds > 0 ? static_cast<std::int64_t>(seconds / 60.0) : 0;
    if (minutes < 60) {
        return plural(minutes, "minute");
    }
    if (minutes < 1440) {
        const auto rest = minutes % 60;
        return rest == 0
                   ? plural(minutes / 60, "hour")
                   : plural(minutes / 60, "hour") + QStringLiteral(", ") + plural(rest, "minute");
    }
    const auto hours = (minutes % 1440) / 60;
    return hours == 0
               ? plural(minutes / 1440, "day")
               : plural(minutes / 1440, "day") + QStringLiteral(", ") + plural(hours, "hour");
}

QString percent(double fraction) {
    return QStringLiteral("%1%").arg(std::lround(fraction * 100.0));
}

} // namespace tarvik::MetricFormat
