#include "core/awake/keep_awake_evaluator.h"

namespace tarvik {

int scheduleWeekday(const QDate& date) {
    return date.dayOfWeek() % 7 + 1; // Qt counts 1 = Monday … 7 = Sunday
}

namespace {

QDateTime wallClock(const QDate& day, int minutes, const QTimeZone& zone) {
    const QTime time(minutes / 60, minutes % 60);
    const QDateTime t(day, time, zone);
    if (t.isValid()) {
        return t;
    }
    // The clocks skipped this time going forward, and Qt calls it invalid, which compares
    // before every instant. Read with the offset in force a day earlier, it lands as far past
    // the jump as it was into the gap (02:30 becomes 03:30).
    const int before = zone.offsetFromUtc(QDateTime(day.addDays(-1), time, zone));
    return QDateTime(day, time, Qt::OffsetFromUTC, before).toTimeZone(zone);
}

struct Window {
    QDateTime start;
    QDateTime end;
};

// The window that opens on `day`, when the schedule opens one that day.
std::optional<Window> windowOpening(const KeepAwakeSchedule& s, const QDate& day,
                                    const QTimeZone& zone) {
    if (!s.isValid() || !s.weekdays.contains(scheduleWeekday(day))) {
        return std::nullopt;
    }
    const QDate endDay = s.endMinutes > s.startMinutes ? day : day.addDays(1);
    return Window{wallClock(day, s.startMinutes, zone), wallClock(endDay, s.endMinutes, zone)};
}

} // namespace

namespace KeepAwakeEvaluator {

std::optional<QDateTime> openWindowEnd(const KeepAwakeSchedule& schedule, const QDateTime& at,
                                       const QTimeZone& zone) {
    const QDate today = at.toTimeZone(zone).date();
    // Yesterday's window may run past midnight into today.
    for (const QDate& day : {today.addDays(-1), today}) {
        if (auto w = windowOpening(schedule, day, zone); w && w->start <= at && at < w->end) {
            return w->end;
        }
    }
    return std::nullopt;
}

KeepAwakeState evaluate(const std::vector<KeepAwakeSchedule>& schedules,
                        const std::optional<ManualSession>& manual, const QDateTime& now,
                        const QTimeZone& zone) {
    if (manual && !manual->hasEnded(now)) {
        return KeepAwakeState::manual(manual->until);
    }
    const KeepAwakeSchedule* first = nullptr;
    QDateTime earliest;
    for (const auto& s : schedules) {
        if (!s.isEnabled) {
            continue;
        }
        if (auto end = openWindowEnd(s, now, zone); end && (!first || *end < earliest)) {
            first = &s;
            earliest = *end;
        }
    }
    return first ? KeepAwakeState::bySchedule(*first, earliest) : KeepAwakeState::inactive();
}

std::optional<QDateTime> nextWindowStart(const std::vector<KeepAwakeSchedule>& schedules,
                                         const QDateTime& after, const QTimeZone& zone) {
    std::optional<QDateTime> next;
    const QDate today = after.toTimeZone(zone).date();
    for (const auto& s : schedules) {
        if (!s.isEnabled) {
            continue;
        }
        for (int d = 0; d <= 7; ++d) {
            auto w = windowOpening(s, today.addDays(d), zone);
            if (w && w->start > after) {
                if (!next || w->start < *next) {
                    next = w->start;
                }
                break;
            }
        }
    }
    return next;
}

} // namespace KeepAwakeEvaluator

} // namespace tarvik
