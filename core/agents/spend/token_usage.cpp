#include "core/agents/spend/token_usage.h"

namespace tarvik {

std::optional<double> TokenUsageEvent::cost() const {
    const auto p = ModelPricing::price(model);
    if (!p) {
        return std::nullopt;
    }
    return cost(*p);
}

double TokenUsageEvent::cost(const ModelPrice& p) const {
    const double sum = static_cast<double>(input) * p.input +
                       static_cast<double>(output) * p.output +
                       static_cast<double>(cacheWrite) * p.cacheWrite +
                       static_cast<double>(cacheRead) * p.cacheRead;
    return sum / 1'000'000.0;
}

} // namespace tarvik
