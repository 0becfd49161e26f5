#pragma once

#include "core/awake/keep_awake_state.h"
#include "core/awake/manual_session.h"

#include <QTimeZone>
#include <optional>
#include <vector>

namespace tarvik {

// Decides from the schedules, the manual session and the time alone whether to keep awake.
// A manual session that has not ended wins over open schedule windows: it is the user's latest
// word. Windows are placed by wall-clock time in `zone`, so "09:00–17:00" stays that on the
// days clocks change (the window is an hour shorter or longer then).
namespace KeepAwakeEvaluator {

KeepAwakeState evaluate(const std::vector<KeepAwakeSchedule>& schedules,
                        const std::optional<ManualSession>& manual, const QDateTime& now,
                        const QTimeZone& zone = QTimeZone::systemTimeZone());

// The end of `schedule`'s window that contains `at`, or nothing when none is open then.
std::optional<QDateTime> openWindowEnd(const KeepAwakeSchedule& schedule, const QDateTime& at,
                                       const QTimeZone& zone = QTimeZone::systemTimeZone());

// When the next window of any enabled schedule opens after `after`, within a week.
std::optional<QDateTime> nextWindowStart(const std::vector<KeepAwakeSchedule>& schedules,
                                         const QDateTime& after,
                                         const QTimeZone& zone = QTimeZone::systemTimeZone());

} // namespace KeepAwakeEvaluator

// Weekday of a date in the schedules' numbering (1 = Sunday … 7 = Saturday).
int scheduleWeekday(const QDate& date);

} // namespace tarvik
