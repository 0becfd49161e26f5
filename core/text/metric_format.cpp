#include "core/text/metric_format.h"

#include "core/text/counts.h"
#include "core/text/whole_number.h"

#include <array>
#include <cmath>

namespace tarvik::MetricFormat {
namespace {

QString minutesOf(std::int64_t n) {
    return countOf(n, u"minute", u"minutes");
}
QString hoursOf(std::int64_t n) {
    return countOf(n, u"hour", u"hours");
}
QString daysOf(std::int64_t n) {
    return countOf(n, u"day", u"days");
}

} // namespace

QString bytes(std::int64_t count) {
    const double magnitude = std::fabs(static_cast<double>(count));
    if (magnitude < 1000.0) {
        return countOf(count, u"byte", u"bytes");
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
    return bytes(wholeNumber<std::int64_t>(bytesPerSecond)) + QStringLiteral("/s");
}

QString duration(double seconds) {
    const auto minutes = seconds > 0 ? wholeNumber<std::int64_t>(seconds / 60.0) : 0;
    if (minutes < 60) {
        return minutesOf(minutes);
    }
    if (minutes < 1440) {
        const auto rest = minutes % 60;
        return rest == 0 ? hoursOf(minutes / 60)
                         : hoursOf(minutes / 60) + QStringLiteral(", ") + minutesOf(rest);
    }
    const auto hours = (minutes % 1440) / 60;
    return hours == 0 ? daysOf(minutes / 1440)
                      : daysOf(minutes / 1440) + QStringLiteral(", ") + hoursOf(hours);
}

QString percent(double fraction) {
    return QStringLiteral("%1%").arg(std::lround(fraction * 100.0));
}

} // namespace tarvik::MetricFormat
