#pragma once

// Reading the loosely typed JSON of the usage services' answers and the agents' sign-in files.
#include "core/agents/limits/agent_usage_report.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <optional>

namespace tarvik::UsageJSON {

// The body of an answer when it is a JSON object; none for anything else.
std::optional<QJsonObject> object(const QByteArray& body);
// A service's answer, and the report to be read from it.
struct Reading {
    QJsonObject body;
    AgentUsageReport report; // the provider's, fetched now, empty until filled in
};
// `provider`'s answer when its body is a JSON object; none for anything else.
std::optional<Reading> read(const QByteArray& body, AgentProvider provider, const QDateTime& now);

// A JSON number, or a string holding one.
std::optional<double> number(const QJsonValue& value);
// A number of Unix seconds, or a string as TimeStamps::fromText reads it.
std::optional<QDateTime> date(const QJsonValue& value);
// A string that isn't empty; none for anything else.
std::optional<QString> text(const QJsonValue& value);
// "pro" -> "Pro": a plan name as the services write it, for display.
QString capitalized(const QString& word);
// The same of a plan named in an answer; none when it is missing or empty.
std::optional<QString> plan(const QJsonValue& value);
// "seven_day_opus" -> "Seven Day Opus"; "oauth" is written "OAuth".
QString title(const QString& snakeCaseKey);
// A limit's name from its period: up to 6 hours "Session", from 144 hours "Weekly", from a
// day "N days", else "N-hour".
QString windowTitle(double seconds);

} // namespace tarvik::UsageJSON
