#pragma once

#include "core/agents/limits/agent_usage_report.h"

#include <QByteArray>

namespace tarvik::ClaudeUsage {

struct Credentials {
    QString accessToken;
    std::optional<QDateTime> expiresAt;
    std::optional<QString> subscription;
    std::optional<QString> rateLimitTier;
};

// ".credentials.json": {"claudeAiOauth": {"accessToken", "expiresAt" (ms), …}}; none when
// unreadable or without a token.
std::optional<Credentials> credentials(const QByteArray& json);
// "Max 20x" from a tier such as "default_claude_max_20x", else the subscription ("Pro").
std::optional<QString> planName(const std::optional<QString>& rateLimitTier,
                                const std::optional<QString>& subscription);
// The limits and extra-usage credit of an "/api/oauth/usage" answer; none when it isn't a JSON
// object.
std::optional<AgentUsageReport> report(const QByteArray& body, const Credentials& credentials,
                                       const QDateTime& now);

} // namespace tarvik::ClaudeUsage
