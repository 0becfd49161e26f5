#include "core/agents/spend/usage_period.h"

namespace tarvik {

QString rawValue(UsagePeriod period) {
    switch (period) {
    case UsagePeriod::Today:
        return QStringLiteral("today");
    case UsagePeriod::Yesterday:
        return QStringLiteral("yesterday");
    case UsagePeriod::Last30Days:
        return QStringLiteral("30d");
    }
    return {};
}

std::optional<UsagePeriod> usagePeriodFromRaw(const QString& raw) {
    for (UsagePeriod p : kAllUsagePeriods) {
        if (rawValue(p) == raw) {
            return p;
        }
    }
    return std::nullopt;
}

QString title(UsagePeriod period) {
    switch (period) {
    case UsagePeriod::Today:
        return QStringLiteral("Today");
    case UsagePeriod::Yesterday:
        return QStringLiteral("Yesterday");
    case UsagePeriod::Last30Days:
        return QStringLiteral("30 Days");
    }
    return {};
}

QDate firstDay(UsagePeriod period, const QDateTime& now) {
    const QDate today = now.toLocalTime().date();
    switch (period) {
    case UsagePeriod::Today:
        return today;
    case UsagePeriod::Yesterday:
        return today.addDays(-1);
    case UsagePeriod::Last30Days:
        return today.addDays(-29);
    }
    return today;
}

QDate lastDay(UsagePeriod period, const QDateTime& now) {
    const QDate today = now.toLocalTime().date();
    return period == UsagePeriod::Yesterday ? today.addDays(-1) : today;
}

UsageInterval interval(UsagePeriod period, const QDateTime& now) {
    // The bounds come from the local calendar; kept in UTC, every comparison with an event's
    // UTC time is a plain number comparison rather than a time-zone lookup.
    const QDateTime start = firstDay(period, now).startOfDay().toUTC();
    if (period == UsagePeriod::Yesterday) {
        return {start, now.toLocalTime().date().startOfDay().toUTC()};
    }
    return {start, now.addSecs(1).toUTC()};
}

} // namespace tarvik
