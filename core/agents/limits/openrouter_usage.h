#pragma once

#include "core/agents/limits/agent_usage_report.h"

#include <QByteArray>

namespace tarvik::OpenRouterUsage {

// Where a key is made; named in the sign-in hint and opened by the screen's button.
inline constexpr const char* kKeysPage = "https://openrouter.ai/settings/keys";

// The "key" and "credits" answers of the API; none when either isn't understood.
std::optional<AgentUsageReport> report(const QByteArray& key, const QByteArray& credits,
                                       const QDateTime& now);

} // namespace tarvik::OpenRouterUsage
