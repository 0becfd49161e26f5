// List prices by model name and what an answer's tokens cost at them.
#include "core/agents/spend/model_pricing.h"
#include "core/agents/spend/token_usage.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {

// input / output / cache write / cache read, or "none".
std::string prices(const char* model) {
    const auto p = ModelPricing::price(QString::fromLatin1(model));
    if (!p) {
        return "none";
    }
    return QString::asprintf("%g/%g/%g/%g", p->input, p->output, p->cacheWrite, p->cacheRead)
        .toStdString();
}

} // namespace

TEST(ModelPricing, ClaudeByFamilyNewestFirstAndGptByExactName) {
    // A Claude name finds its family whatever date follows, and the newer family wins over an
    // older one that shares its words; case does not matter.
    EXPECT_EQ(prices("claude-opus-4-5-20251101"), "5/25/6.25/0.5");
    EXPECT_EQ(prices("claude-opus-4-1"), "15/75/18.75/1.5");
    EXPECT_EQ(prices("Claude-Opus-4-5"), "5/25/6.25/0.5");
    EXPECT_EQ(prices("claude-3-5-haiku-20241022"), "0.8/4/1/0.08");
    // A GPT name must match exactly: a suffix the table doesn't know has no price.
    EXPECT_EQ(prices("GPT-5-Codex"), "1.25/10/0/0.125");
    EXPECT_EQ(prices("gpt-5-codex-high"), "none");
    EXPECT_EQ(prices("gpt-4o"), "none");
    EXPECT_EQ(prices(""), "none");
}

TEST(TokenUsageEvent, EachKindOfTokenAtItsOwnPricePerMillion) {
    TokenUsageEvent sonnet;
    sonnet.model = QStringLiteral("claude-sonnet-4-5");
    sonnet.input = 1'000'000;
    EXPECT_DOUBLE_EQ(*sonnet.cost(), 3.00);

    TokenUsageEvent opus;
    opus.model = QStringLiteral("claude-opus-4-5-20251101");
    opus.input = 1000;
    opus.output = 2000;
    opus.cacheWrite = 4000;
    opus.cacheRead = 8000;
    EXPECT_EQ(opus.totalTokens(), 15'000);
    EXPECT_DOUBLE_EQ(*opus.cost(), (1000 * 5.0 + 2000 * 25.0 + 4000 * 6.25 + 8000 * 0.5) / 1e6);

    opus.model = QStringLiteral("gpt-5-codex-high");
    EXPECT_FALSE(opus.cost());
}
