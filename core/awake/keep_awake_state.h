#pragma once

#include "core/awake/keep_awake_schedule.h"

#include <QDateTime>
#include <optional>

namespace tarvik {

// Whether the computer is being kept awake now, why, and until when (absent: until the user
// turns it off).
struct KeepAwakeState {
    enum class Reason { Manual, Schedule };

    bool isActive = false;
    Reason reason = Reason::Manual;
    std::optional<KeepAwakeSchedule> schedule; // the schedule whose window ends first
    std::optional<QDateTime> until;

    static KeepAwakeState inactive() { return {}; }
    static KeepAwakeState manual(std::optional<QDateTime> until) {
        return {true, Reason::Manual, std::nullopt, std::move(until)};
    }
    static KeepAwakeState bySchedule(KeepAwakeSchedule schedule, QDateTime until) {
        return {true, Reason::Schedule, std::move(schedule), std::move(until)};
    }

    bool operator==(const KeepAwakeState&) const = default;
};

} // namespace tarvik
