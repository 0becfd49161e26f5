#pragma once

#include <QString>
#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace tarvik {

// The AI coding agents whose limits and spend Tarvik shows. Raw values are stored in the
// settings "agentUsage.order" and "agentUsage.enabled".
enum class AgentProvider { Claude, Codex, Copilot, OpenRouter };

inline constexpr std::array<AgentProvider, 4> kAllAgentProviders = {
    AgentProvider::Claude, AgentProvider::Codex, AgentProvider::Copilot, AgentProvider::OpenRouter};

QString rawValue(AgentProvider provider); // "claude", "codex", "copilot", "openRouter"
std::optional<AgentProvider> agentProviderFromRaw(const QString& raw);
QString title(AgentProvider provider);
// The line under the title: where the figures come from.
QString source(AgentProvider provider);

// The providers of a stored list ("claude,codex"), in its order; unknown names and repeats
// are dropped.
std::vector<AgentProvider> parseProviderList(const QString& stored);
QString providerListText(const std::vector<AgentProvider>& providers);
// Every provider in the stored order (the ones it misses after, in the usual order), each with
// whether it is enabled.
std::vector<std::pair<AgentProvider, bool>> providersInOrder(const QString& order,
                                                             const QString& enabled);

} // namespace tarvik
