#include "core/agents/agent_provider.h"

namespace tarvik {

QString rawValue(AgentProvider provider) {
    switch (provider) {
    case AgentProvider::Claude: return QStringLiteral("claude");
    case AgentProvider::Codex: return QStringLiteral("codex");
    case AgentProvider::Copilot: return QStringLiteral("copilot");
    case AgentProvider::OpenRouter: return QStringLiteral("openRouter");
    }
    return {};
}

std::optional<AgentProvider> agentProviderFromRaw(const QString& raw) {
    for (AgentProvider p : kAllAgentProviders) {
        if (rawValue(p) == raw) {
            return p;
        }
    }
    return std::nullopt;
}

QString title(AgentProvider provider) {
    switch (provider) {
    case AgentProvider::Claude: return QStringLiteral("Claude");
    case AgentProvider::Codex: return QStringLiteral("Codex");
    case AgentProvider::Copilot: return QStringLiteral("GitHub Copilot");
    case AgentProvider::OpenRouter: return QStringLiteral("OpenRouter");
    }
    return {};
}

QString source(AgentProvider provider) {
    switch (provider) {
    case AgentProvider::Claude:
        return QStringLiteral("Claude Code sign-in · session, weekly and model limits");
    case AgentProvider::Codex: return QStringLiteral("Codex CLI sign-in · session and weekly limits");
    case AgentProvider::Copilot:
        return QStringLiteral("GitHub sign-in · premium requests and quotas");
    case AgentProvider::OpenRouter: return QStringLiteral("API key · credits and spend");
    }
    return {};
}

} // namespace tarvik
