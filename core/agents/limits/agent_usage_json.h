#pragma once

// Reports and errors as JSON for `tarvik agents --json`.
#include "core/agents/limits/agent_usage_report.h"

#include <QJsonObject>

namespace tarvik {

QJsonObject toJson(const AgentUsageReport& report, const QDateTime& now);
QJsonObject toJson(const AgentUsageError& error);

} // namespace tarvik
