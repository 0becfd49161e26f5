#pragma once

// Reading the loosely typed JSON of the usage services and the agents' logs.
#include <QDateTime>
#include <QJsonValue>
#include <QString>
#include <optional>
#include <string_view>

namespace tarvik::UsageJSON {

// A JSON number, or a string holding one.
std::optional<double> number(const QJsonValue& value);
// A number of Unix seconds, or a string: an ISO 8601 date-time with or without fractional
// seconds (any number of digits), or a plain date (year-month-day, midnight UTC).
std::optional<QDateTime> date(const QJsonValue& value);
// The same for the text of a JSON string.
std::optional<QDateTime> date(std::string_view text);
// Only the layout the agents write ("2026-11-22T08:30:05.123Z", "Z" or a "±HH:MM" offset, up to
// 9 digits of fraction), read by hand to the same millisecond as date(): none for any other text,
// which date() reads through Qt.
std::optional<QDateTime> isoDate(std::string_view text);
// "pro" -> "Pro": a plan name as the services write it, for display.
QString capitalized(const QString& word);
// "seven_day_opus" -> "Seven Day Opus"; "oauth" is written "OAuth".
QString title(const QString& snakeCaseKey);
// A limit's name from its period: up to 6 hours "Session", from 144 hours "Weekly", from a
// day "N days", else "N-hour".
QString windowTitle(double seconds);

} // namespace tarvik::UsageJSON
