#pragma once

// Reports and errors as JSON for `tarvik agents --json`, and in words for its text output.
#include "core/agents/limits/agent_usage_report.h"

#include <QJsonObject>

namespace tarvik {

QJsonObject toJson(const AgentUsageReport& report, const QDateTime& now);
QJsonObject toJson(const AgentUsageError& error);
// "resets in 2 hours, 13 minutes"; empty without a reset time.
QString resetText(const UsageLimit& limit, const QDateTime& now);

} // namespace tarvik
