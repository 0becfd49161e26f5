#pragma once

#include "core/agents/limits/agent_usage_report.h"

#include <QByteArray>

namespace tarvik::CopilotUsage {

// The GitHub token Copilot's editor plugins saved ("apps.json" or "hosts.json": the entry
// whose key names github.com, its "oauth_token").
std::optional<QString> pluginToken(const QByteArray& json);
// A "/copilot_internal/user" answer, paid ("quota_snapshots") or free ("limited_user_quotas"
// and "monthly_quotas"); none when it isn't a JSON object.
std::optional<AgentUsageReport> report(const QByteArray& body, const QDateTime& now);

} // namespace tarvik::CopilotUsage
