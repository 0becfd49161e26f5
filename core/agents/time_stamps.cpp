#include "core/agents/time_stamps.h"

#include <cmath>
#include <cstdint>

namespace tarvik::TimeStamps {
namespace {

// The number in text[at, at + n) when it is all digits.
std::optional<int> digits(std::string_view text, std::size_t at, std::size_t n) {
    if (at + n > text.size()) {
        return std::nullopt;
    }
    int value = 0;
    for (std::size_t i = at; i < at + n; ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return std::nullopt;
        }
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

// Days from 1970-01-01 to a date of the proleptic Gregorian calendar.
std::int64_t daysSinceEpoch(int year, int month, int day) {
    const int y = month <= 2 ? year - 1 : year;
    const int era = (y >= 0 ? y : y - 399) / 400;
    const int yearOfEra = y - era * 400;
    const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return std::int64_t{era} * 146'097 + dayOfEra - 719'468;
}

// "YYYY-MM-DDTHH:MM:SS", an optional fraction of 1 to 9 digits and "Z" or "±HH:MM", as
// milliseconds since the epoch; none for anything else, including dates that don't exist.
std::optional<std::int64_t> isoMilliseconds(std::string_view t) {
    if (t.size() < 20 || t[4] != '-' || t[7] != '-' || t[10] != 'T' || t[13] != ':' ||
        t[16] != ':') {
        return std::nullopt;
    }
    const auto year = digits(t, 0, 4), month = digits(t, 5, 2), day = digits(t, 8, 2);
    const auto hour = digits(t, 11, 2), minute = digits(t, 14, 2), second = digits(t, 17, 2);
    if (!year || !month || !day || !hour || !minute || !second || *year < 1 || *month < 1 ||
        *month > 12 || *day < 1 || *day > QDate(*year, *month, 1).daysInMonth() || *hour > 23 ||
        *minute > 59 || *second > 59) {
        return std::nullopt;
    }
    std::size_t at = 19;
    std::int64_t ms = 0;
    if (t[at] == '.') {
        std::size_t n = 0;
        int fraction = 0;
        while (at + 1 + n < t.size() && t[at + 1 + n] >= '0' && t[at + 1 + n] <= '9') {
            fraction = n < 9 ? fraction * 10 + (t[at + 1 + n] - '0') : fraction;
            ++n;
        }
        if (n < 1 || n > 9) {
            return std::nullopt;
        }
        // Rounded half up to the millisecond as Qt does, which may carry into the next second.
        int scale = 1;
        for (std::size_t i = 3; i < n; ++i) {
            scale *= 10;
        }
        for (std::size_t i = n; i < 3; ++i) {
            fraction *= 10;
        }
        ms = (fraction + scale / 2) / scale;
        at += 1 + n;
    }
    std::int64_t offsetMinutes = 0;
    if (at + 1 == t.size() && t[at] == 'Z') {
        // UTC
    } else if (at + 6 == t.size() && (t[at] == '+' || t[at] == '-') && t[at + 3] == ':') {
        const auto h = digits(t, at + 1, 2), m = digits(t, at + 4, 2);
        if (!h || !m || *h > 23 || *m > 59) {
            return std::nullopt;
        }
        offsetMinutes = (t[at] == '+' ? 1 : -1) * (*h * 60 + *m);
    } else {
        return std::nullopt;
    }
    const std::int64_t seconds = daysSinceEpoch(*year, *month, *day) * 86'400 + *hour * 3600 +
                                 *minute * 60 + *second - offsetMinutes * 60;
    return seconds * 1000 + ms;
}

} // namespace

std::optional<QDateTime> fromSeconds(double seconds) {
    const double ms = seconds * 1000.0;
    // Past ±2^63 milliseconds the conversion to a whole number is undefined.
    if (!std::isfinite(ms) || std::fabs(ms) >= 9.2e18) {
        return std::nullopt;
    }
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(ms), Qt::UTC);
}

std::optional<QDateTime> secondsAfter(const QDateTime& from, double seconds) {
    return fromSeconds(static_cast<double>(from.toMSecsSinceEpoch()) / 1000.0 + seconds);
}

std::optional<QDateTime> fromText(const QString& value) {
    const QString text = value.trimmed();
    // Qt reads ISO 8601 with or without fractional seconds and with a zone suffix.
    QDateTime d = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!d.isValid()) {
        // Fractions longer than milliseconds ("…:05.123456789Z"): cut them and try again.
        const auto dot = text.indexOf(QLatin1Char('.'));
        if (dot > 0) {
            qsizetype end = dot + 1;
            while (end < text.size() && text[end].isDigit()) {
                ++end;
            }
            d = QDateTime::fromString(text.left(dot) + text.mid(end), Qt::ISODate);
        }
    }
    if (!d.isValid()) {
        const QDate day = QDate::fromString(text, Qt::ISODate);
        if (day.isValid()) {
            d = day.startOfDay(Qt::UTC);
        }
    }
    if (!d.isValid()) {
        return std::nullopt;
    }
    return d.toUTC();
}

std::optional<QDateTime> fromUtf8(std::string_view text) {
    if (auto d = isoDate(text)) {
        return d;
    }
    return fromText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

std::optional<QDateTime> isoDate(std::string_view text) {
    if (const auto ms = isoMilliseconds(text)) {
        return QDateTime::fromMSecsSinceEpoch(*ms, Qt::UTC);
    }
    return std::nullopt;
}

} // namespace tarvik::TimeStamps
