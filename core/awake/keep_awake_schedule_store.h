#pragma once

#include "core/awake/keep_awake_schedule.h"

#include <QByteArray>
#include <vector>

namespace tarvik {

// The schedules as JSON under the preference "keepAwakeSchedules".
namespace KeepAwakeScheduleStore {

struct Decoded {
    std::vector<KeepAwakeSchedule> schedules;
    QString error; // set when the data could not be read; the schedules are then empty
};

QByteArray encode(const std::vector<KeepAwakeSchedule>& schedules);
Decoded decode(const QByteArray& data);

} // namespace KeepAwakeScheduleStore

} // namespace tarvik
