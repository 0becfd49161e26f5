#pragma once

// The time stamps of the usage services' answers and the agents' logs.
#include <QDateTime>
#include <QString>
#include <optional>
#include <string_view>

namespace tarvik::TimeStamps {

// A number of Unix seconds, to the millisecond (cut, not rounded), in UTC; none when it is beyond
// what a date can hold.
std::optional<QDateTime> fromSeconds(double seconds);
// `seconds` after `from` (an answer's "resets in"), the same way.
std::optional<QDateTime> secondsAfter(const QDateTime& from, double seconds);
// An ISO 8601 date-time with or without fractional seconds (any number of digits), or a plain
// date (year-month-day, midnight UTC); white space around it is ignored.
std::optional<QDateTime> fromText(const QString& text);
// The same for UTF-8 text, with the agents' own layout read by hand.
std::optional<QDateTime> fromUtf8(std::string_view text);
// Only the layout the agents write ("2026-11-22T08:30:05.123Z", "Z" or a "±HH:MM" offset, up to
// 9 digits of fraction), read by hand to the same millisecond as fromText(): none for any other
// text, which fromText() reads through Qt.
std::optional<QDateTime> isoDate(std::string_view text);

} // namespace tarvik::TimeStamps
