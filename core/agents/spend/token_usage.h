#pragma once

#include "core/agents/agent_provider.h"
#include "core/agents/spend/model_pricing.h"

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <optional>

namespace tarvik {

// The tokens of one answer an agent wrote into its local log.
struct TokenUsageEvent {
    AgentProvider provider = AgentProvider::Claude;
    QDateTime date; // UTC
    QString model;
    std::int64_t input = 0;
    std::int64_t output = 0;
    std::int64_t cacheWrite = 0;
    std::int64_t cacheRead = 0;

    std::int64_t totalTokens() const { return input + output + cacheWrite + cacheRead; }
    // In US dollars at the model's list prices; none when the model has no known price.
    std::optional<double> cost() const;
    double cost(const ModelPrice& price) const; // at a price already looked up
};

} // namespace tarvik
