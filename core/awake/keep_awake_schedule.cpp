#include "core/awake/keep_awake_schedule.h"

#include <QStringList>

namespace tarvik {

bool KeepAwakeSchedule::isValid() const {
    if (weekdays.empty() || *weekdays.begin() < 1 || *weekdays.rbegin() > 7) {
        return false;
    }
    return startMinutes >= 0 && endMinutes >= 0 && startMinutes < kMinutesPerDay &&
           endMinutes < kMinutesPerDay && startMinutes != endMinutes;
}

int KeepAwakeSchedule::durationMinutes() const {
    return endMinutes > startMinutes ? endMinutes - startMinutes
                                     : endMinutes + kMinutesPerDay - startMinutes;
}

QString KeepAwakeSchedule::displayName() const {
    return name.trimmed().isEmpty() ? QStringLiteral("Schedule") : name;
}

std::set<int> KeepAwakeSchedule::weekdaysPreset() {
    return {2, 3, 4, 5, 6};
}

std::set<int> KeepAwakeSchedule::everyDay() {
    return {1, 2, 3, 4, 5, 6, 7};
}

QString startEqualsEndText() {
    return QStringLiteral("Start and end must differ.");
}

QString endsNextDayText() {
    return QStringLiteral("Ends the next day.");
}

QString weekdaysText(const std::set<int>& weekdays) {
    if (weekdays == KeepAwakeSchedule::everyDay()) {
        return QStringLiteral("Every day");
    }
    if (weekdays == KeepAwakeSchedule::weekdaysPreset()) {
        return QStringLiteral("Mon–Fri");
    }
    if (weekdays.empty()) {
        return QStringLiteral("No days");
    }
    static const char* const names[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    // Listed from Monday, the way a working week reads.
    QStringList out;
    for (int d : {2, 3, 4, 5, 6, 7, 1}) {
        if (weekdays.contains(d)) {
            out << QString::fromLatin1(names[d - 1]);
        }
    }
    return out.join(QStringLiteral(", "));
}

QString minutesText(int minutes) {
    return QStringLiteral("%1:%2")
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

} // namespace tarvik
