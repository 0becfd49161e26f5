#pragma once

#include "core/agents/spend/token_usage.h"
#include "core/agents/spend/usage_period.h"

#include <QDate>
#include <vector>

namespace tarvik {

// What the spend figures rest on, said wherever they are shown.
inline constexpr const char* kSpendBasis =
    "Estimated from local Claude Code and Codex logs at public API prices. Subscriptions don't "
    "charge per token.";

// One model's share of a period.
struct ModelLine {
    QString model;
    std::optional<double> cost; // none when the model has no known price
    std::int64_t tokens = 0;
};

// The spend of a period, all models together and model by model.
struct UsageSummary {
    double totalCost = 0; // of the models with a known price
    std::int64_t totalTokens = 0;
    // Costliest first; a model without a price sits by its token count among the others.
    std::vector<ModelLine> models;

    static UsageSummary of(const std::vector<TokenUsageEvent>& events, UsagePeriod period,
                           const QDateTime& now);
};

// The spend of one local calendar day, for the period's bar chart.
struct DailySpend {
    QDate day;
    double cost = 0;
    std::int64_t tokens = 0;

    // Every day of the period, oldest first; days without events are there with zero.
    static std::vector<DailySpend> series(const std::vector<TokenUsageEvent>& events,
                                          UsagePeriod period, const QDateTime& now);
};

} // namespace tarvik
