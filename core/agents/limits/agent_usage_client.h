#pragma once

#include "core/agents/limits/agent_usage_report.h"

#include <QByteArray>
#include <QList>
#include <QUrl>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class QNetworkAccessManager;
class QNetworkRequest;

namespace tarvik {

class SecretStore;

// The services' addresses; each can be moved (tests point them at local servers) through
// TARVIK_CLAUDE_API, TARVIK_CODEX_API, TARVIK_COPILOT_API and TARVIK_OPENROUTER_API.
struct AgentEndpoints {
    QUrl claude = QUrl(QStringLiteral("https://api.anthropic.com/"));
    QUrl codex = QUrl(QStringLiteral("https://chatgpt.com/"));
    QUrl copilot = QUrl(QStringLiteral("https://api.github.com/"));
    QUrl openRouter = QUrl(QStringLiteral("https://openrouter.ai/"));
    static AgentEndpoints fromEnvironment();
};

// The key pasted for a provider (OpenRouter's API key, a GitHub token for Copilot), kept in
// the Secret Service under this service name.
inline constexpr const char* kAgentKeysService = "org.pellor.tarvik.agent-usage";
QString pastedKeyName(AgentProvider provider);

// Fetches one provider's limits from its own service with the sign-in already on this machine.
// Blocking, on the calling thread's own event loop; use one client per thread. Credentials are read
// afresh at every fetch and sent only to the service that issued them.
class AgentUsageClient {
public:
    struct Options {
        AgentEndpoints endpoints = AgentEndpoints::fromEnvironment();
        // The pasted key of a provider, if any (the Secret Service by default).
        std::function<std::optional<QString>(AgentProvider)> pastedKey;
        // `gh` candidates tried in order before PATH.
        std::vector<QString> ghCandidates = {QStringLiteral("/home/linuxbrew/.linuxbrew/bin/gh"),
                                             QStringLiteral("/usr/local/bin/gh")};
        int timeoutMs = 20'000; // for each answer, from its request to its last byte
        // Set when the answer is no longer wanted: a request under way is abandoned at once.
        const std::atomic<bool>* cancel = nullptr;
    };
    AgentUsageClient();
    explicit AgentUsageClient(Options options);
    ~AgentUsageClient();

    // The provider's report, or throws AgentUsageError.
    AgentUsageReport fetch(AgentProvider provider, const QDateTime& now);

    struct Answer {
        int status = 0;
        QByteArray body;
        QList<std::pair<QByteArray, QByteArray>> headers;
    };
    // Every request: time-out, "User-Agent: Tarvik", no cache, an answer of a few MB at most.
    // Throws rateLimited when the answer asks to slow down, network when nothing or not all of
    // it came back in time, and unexpected when it was too large.
    Answer get(QNetworkRequest request, const QDateTime& now);

private:
    AgentUsageReport fetchClaude(const QDateTime& now);
    AgentUsageReport fetchCodex(const QDateTime& now);
    AgentUsageReport fetchCopilot(const QDateTime& now);
    AgentUsageReport fetchOpenRouter(const QDateTime& now);
    std::optional<QString> ghToken() const;

    Options options_;
    std::unique_ptr<QNetworkAccessManager> nam_;
};

} // namespace tarvik
