#include "core/agents/agent_provider.h"

#include <QStringList>
#include <algorithm>

namespace tarvik {

QString rawValue(AgentProvider provider) {
    switch (provider) {
    case AgentProvider::Claude:
        return QStringLiteral("claude");
    case AgentProvider::Codex:
        return QStringLiteral("codex");
    case AgentProvider::Copilot:
        return QStringLiteral("copilot");
    case AgentProvider::OpenRouter:
        return QStringLiteral("openRouter");
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
    case AgentProvider::Claude:
        return QStringLiteral("Claude");
    case AgentProvider::Codex:
        return QStringLiteral("Codex");
    case AgentProvider::Copilot:
        return QStringLiteral("GitHub Copilot");
    case AgentProvider::OpenRouter:
        return QStringLiteral("OpenRouter");
    }
    return {};
}

QString source(AgentProvider provider) {
    switch (provider) {
    case AgentProvider::Claude:
        return QStringLiteral("Claude Code sign-in · session, weekly and model limits");
    case AgentProvider::Codex:
        return QStringLiteral("Codex CLI sign-in · session and weekly limits");
    case AgentProvider::Copilot:
        return QStringLiteral("GitHub sign-in · premium requests and quotas");
    case AgentProvider::OpenRouter:
        return QStringLiteral("API key · credits and spend");
    }
    return {};
}

std::vector<AgentProvider> parseProviderList(const QString& stored) {
    std::vector<AgentProvider> out;
    for (const QString& piece : stored.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const auto p = agentProviderFromRaw(piece.trimmed());
        if (p && std::find(out.begin(), out.end(), *p) == out.end()) {
            out.push_back(*p);
        }
    }
    return out;
}

QString providerListText(const std::vector<AgentProvider>& providers) {
    QStringList raw;
    for (AgentProvider p : providers) {
        raw << rawValue(p);
    }
    return raw.join(QLatin1Char(','));
}

std::vector<std::pair<AgentProvider, bool>> providersInOrder(const QString& order,
                                                             const QString& enabled) {
    std::vector<AgentProvider> all = parseProviderList(order);
    for (AgentProvider p : kAllAgentProviders) {
        if (std::find(all.begin(), all.end(), p) == all.end()) {
            all.push_back(p);
        }
    }
    const std::vector<AgentProvider> on = parseProviderList(enabled);
    std::vector<std::pair<AgentProvider, bool>> out;
    for (AgentProvider p : all) {
        out.emplace_back(p, std::find(on.begin(), on.end(), p) != on.end());
    }
    return out;
}

} // namespace tarvik
