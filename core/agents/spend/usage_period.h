#pragma once

#include <QDate>
#include <QDateTime>
#include <QString>
#include <array>
#include <optional>

namespace tarvik {

// The spans the local cost estimate is shown for.
enum class UsagePeriod { Today, Yesterday, Last30Days };

inline constexpr std::array<UsagePeriod, 3> kAllUsagePeriods = {
    UsagePeriod::Today, UsagePeriod::Yesterday, UsagePeriod::Last30Days};

QString rawValue(UsagePeriod period); // "today", "yesterday", "30d" (as typed on the command line)
std::optional<UsagePeriod> usagePeriodFromRaw(const QString& raw);
QString title(UsagePeriod period); // "Today", "Yesterday", "30 Days"

// A half-open span of time: start included, end not.
struct UsageInterval {
    QDateTime start;
    QDateTime end;
    bool contains(const QDateTime& t) const { return start <= t && t < end; }
};

// The period's span around `now`, by the local calendar. Spans that run up to now end a second
// after it, so an answer logged in the current second still counts.
UsageInterval interval(UsagePeriod period, const QDateTime& now);
// The local calendar days the period covers, oldest first.
QDate firstDay(UsagePeriod period, const QDateTime& now);
QDate lastDay(UsagePeriod period, const QDateTime& now);

} // namespace tarvik
