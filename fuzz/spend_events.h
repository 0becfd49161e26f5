#pragma once

// What the spend screen and command do with the events read from a log: price them and sum
// them by period and by day, where huge or odd token counts would show.
#include "core/agents/spend/token_usage.h"
#include "core/agents/spend/usage_period.h"
#include "core/agents/spend/usage_summary.h"
#include "fuzz/fuzz_input.h"

#include <vector>

namespace tarvik::fuzz {

inline void summarize(const std::vector<TokenUsageEvent>& events) {
    for (UsagePeriod period : kAllUsagePeriods) {
        UsageSummary::of(events, period, now());
        DailySpend::series(events, period, now());
    }
}

} // namespace tarvik::fuzz
