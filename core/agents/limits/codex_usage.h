#pragma once

#include "core/agents/limits/agent_usage_report.h"

#include <QByteArray>
#include <filesystem>

namespace tarvik::CodexUsage {

struct Credentials {
    QString accessToken; // empty with an API key only
    std::optional<QString> accountID;
    bool usesAPIKey = false;
};

// "auth.json": {"tokens": {"access_token", "account_id"}, "OPENAI_API_KEY"}; none when it
// holds neither a token nor a key.
std::optional<Credentials> credentials(const QByteArray& json);
// A "/backend-api/wham/usage" answer: plan, the two windows, credits. None when it isn't a
// JSON object.
std::optional<AgentUsageReport> report(const QByteArray& body, const QDateTime& now);

// The limits Codex wrote into its newest session log under `sessions`, with the note saying
// when; none when no log holds any.
std::optional<AgentUsageReport> latestSessionLimits(const std::filesystem::path& sessions,
                                                    const QDateTime& now);
// The limits of one log line, when it is a "token_count" event that carries them.
std::optional<std::pair<QDateTime, std::vector<UsageLimit>>> limitsFromLine(const QByteArray& line);

} // namespace tarvik::CodexUsage
