#pragma once

#include <QString>
#include <array>
#include <optional>

namespace tarvik {

// The AI coding agents whose limits and spend Tarvik shows. Raw values are stored in the
// settings "agentUsage.order" and "agentUsage.enabled".
enum class AgentProvider { Claude, Codex, Copilot, OpenRouter };

inline constexpr std::array<AgentProvider, 4> kAllAgentProviders = {
    AgentProvider::Claude, AgentProvider::Codex, AgentProvider::Copilot,
    AgentProvider::OpenRouter};

QString rawValue(AgentProvider provider); // "claude", "codex", "copilot", "openRouter"
std::optional<AgentProvider> agentProviderFromRaw(const QString& raw);
QString title(AgentProvider provider);
// The line under the title: where the figures come from.
QString source(AgentProvider provider);

} // namespace tarvik
