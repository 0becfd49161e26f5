#include "core/agents/spend/local_days.h"

namespace tarvik {
namespace {

constexpr qint64 kHour = 3600 * 1000;
constexpr qint64 kDay = 24 * 3600;
constexpr qint64 kJulianDayOfEpoch = 2440588; // 1970-01-01

qint64 floorDiv(qint64 a, qint64 b) {
    return a / b - (a % b != 0 && (a < 0) != (b < 0));
}

int offsetAt(qint64 ms) {
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::LocalTime).offsetFromUtc();
}

} // namespace

QDate LocalDays::of(const QDateTime& t) {
    const qint64 ms = t.toMSecsSinceEpoch();
    const qint64 hour = floorDiv(ms, kHour);
    auto found = offsets_.find(hour);
    if (found == offsets_.end()) {
        // Zones change their offset at most once in an hour: equal at both ends means the
        // whole hour has it.
        const int first = offsetAt(hour * kHour);
        const int last = offsetAt(hour * kHour + kHour - 1);
        found = offsets_.emplace(hour, first == last ? first : kChanges).first;
    }
    if (found->second == kChanges) {
        return t.toLocalTime().date();
    }
    const qint64 seconds = floorDiv(ms, 1000) + found->second;
    return QDate::fromJulianDay(floorDiv(seconds, kDay) + kJulianDayOfEpoch);
}

} // namespace tarvik
