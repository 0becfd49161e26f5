#pragma once

// Reading the loosely typed JSON of the usage services' answers and the agents' sign-in files.
#include <QDateTime>
#include <QJsonValue>
#include <QString>
#include <optional>

namespace tarvik::UsageJSON {

// A JSON number, or a string holding one.
std::optional<double> number(const QJsonValue& value);
// A number of Unix seconds, or a string as TimeStamps::fromText reads it.
std::optional<QDateTime> date(const QJsonValue& value);
// "pro" -> "Pro": a plan name as the services write it, for display.
QString capitalized(const QString& word);
// "seven_day_opus" -> "Seven Day Opus"; "oauth" is written "OAuth".
QString title(const QString& snakeCaseKey);
// A limit's name from its period: up to 6 hours "Session", from 144 hours "Weekly", from a
// day "N days", else "N-hour".
QString windowTitle(double seconds);

} // namespace tarvik::UsageJSON
