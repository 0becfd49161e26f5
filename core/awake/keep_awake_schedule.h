#pragma once

#include <QString>
#include <QUuid>
#include <set>

namespace tarvik {

// A weekly window in which the computer is kept awake. Weekdays are numbered 1 = Sunday to
// 7 = Saturday; start and end are minutes after local midnight, and an end at or before the
// start means the window runs into the next day.
struct KeepAwakeSchedule {
    QUuid id = QUuid::createUuid();
    QString name;
    bool isEnabled = true;
    std::set<int> weekdays;
    int startMinutes = 9 * 60;
    int endMinutes = 17 * 60;

    bool isValid() const;
    int durationMinutes() const;
    bool endsNextDay() const { return endMinutes < startMinutes; }
    QString displayName() const;

    static std::set<int> weekdaysPreset(); // Monday to Friday
    static std::set<int> everyDay();

    bool operator==(const KeepAwakeSchedule&) const = default;
};

inline constexpr int kMinutesPerDay = 1440;

// The editor's notes.
QString startEqualsEndText();
QString endsNextDayText();

// "Mon–Fri", "Every day", "Sat, Sun", … for lists and the command line.
QString weekdaysText(const std::set<int>& weekdays);
// 540 -> "09:00".
QString minutesText(int minutes);

} // namespace tarvik
