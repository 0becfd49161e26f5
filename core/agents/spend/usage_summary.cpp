#include "core/agents/spend/usage_summary.h"

#include "core/agents/spend/local_days.h"

#include <QHash>
#include <algorithm>
#include <iterator>

namespace tarvik {
namespace {

// Costliest first; tokens decide when a side has no price, and then ties.
bool ranksBefore(const ModelLine& a, const ModelLine& b) {
    if (a.cost && b.cost && *a.cost != *b.cost) {
        return *a.cost > *b.cost;
    }
    if (a.tokens != b.tokens) {
        return a.tokens > b.tokens;
    }
    return a.model < b.model;
}

// Mixing the two comparisons is not a consistent order over a whole list (cost can put A over
// B, tokens B over C and C over A), so each kind is sorted on its own and the two merged.
std::vector<ModelLine> ranked(std::vector<ModelLine> lines) {
    const auto firstUnpriced = std::stable_partition(
        lines.begin(), lines.end(), [](const ModelLine& l) { return l.cost.has_value(); });
    std::sort(lines.begin(), firstUnpriced, ranksBefore);
    std::sort(firstUnpriced, lines.end(), ranksBefore);
    std::vector<ModelLine> out;
    out.reserve(lines.size());
    std::merge(lines.begin(), firstUnpriced, firstUnpriced, lines.end(), std::back_inserter(out),
               ranksBefore);
    return out;
}

} // namespace

UsageSummary UsageSummary::of(const std::vector<TokenUsageEvent>& events, UsagePeriod period,
                              const QDateTime& now) {
    const UsageInterval span = interval(period, now);
    // Tokens are added up per model first so each model is priced once.
    QHash<QString, TokenUsageEvent> perModel;
    for (const TokenUsageEvent& e : events) {
        if (!span.contains(e.date)) {
            continue;
        }
        TokenUsageEvent& sum = perModel[e.model];
        sum.model = e.model;
        sum.input += e.input;
        sum.output += e.output;
        sum.cacheWrite += e.cacheWrite;
        sum.cacheRead += e.cacheRead;
    }
    UsageSummary summary;
    std::vector<ModelLine> lines;
    lines.reserve(static_cast<std::size_t>(perModel.size()));
    for (const TokenUsageEvent& sum : std::as_const(perModel)) {
        lines.push_back({sum.model, sum.cost(), sum.totalTokens()});
    }
    summary.models = ranked(std::move(lines));
    // Added up in the shown order: the hash's order changes from run to run, and with it the
    // last digit of a sum of fractions.
    for (const ModelLine& line : summary.models) {
        summary.totalCost += line.cost.value_or(0);
        summary.totalTokens += line.tokens;
    }
    return summary;
}

std::vector<DailySpend> DailySpend::series(const std::vector<TokenUsageEvent>& events,
                                           UsagePeriod period, const QDateTime& now) {
    const QDate first = firstDay(period, now);
    const QDate last = lastDay(period, now);
    std::vector<DailySpend> days;
    for (QDate d = first; d <= last; d = d.addDays(1)) {
        days.push_back({d, 0, 0});
    }
    const UsageInterval span = interval(period, now);
    QHash<QString, std::optional<ModelPrice>> prices; // a month can hold many thousand events
    LocalDays local;
    for (const TokenUsageEvent& e : events) {
        if (!span.contains(e.date)) {
            continue;
        }
        const qint64 index = first.daysTo(local.of(e.date));
        if (index < 0 || index >= static_cast<qint64>(days.size())) {
            continue;
        }
        DailySpend& day = days[static_cast<std::size_t>(index)];
        auto price = prices.constFind(e.model);
        if (price == prices.constEnd()) {
            price = prices.insert(e.model, ModelPricing::price(e.model));
        }
        if (*price) {
            day.cost += e.cost(**price);
        }
        day.tokens += e.totalTokens();
    }
    return days;
}

} // namespace tarvik
