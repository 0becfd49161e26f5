// Reading the services' answers, their rate limits and the agents' own files.
#include "core/agents/limits/claude_usage.h"
#include "core/agents/limits/codex_usage.h"
#include "core/agents/limits/copilot_usage.h"
#include "core/agents/limits/openrouter_usage.h"
#include "core/agents/limits/rate_limit_headers.h"
#include "core/agents/limits/usage_json.h"

#include <QJsonValue>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

const QDateTime kNow(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC);

} // namespace

TEST(RateLimitHeaders, WaitsBetweenHalfAMinuteAndAnHour) {
    using H = QList<std::pair<QByteArray, QByteArray>>;
    EXPECT_EQ(RateLimitHeaders::retryAfter(429, H{{"Retry-After", "5"}}, kNow), 30.0);
    EXPECT_EQ(RateLimitHeaders::retryAfter(429, H{{"retry-after", "7200"}}, kNow), 3600.0);
    EXPECT_EQ(RateLimitHeaders::retryAfter(429, H{{"Retry-After", "120"}}, kNow), 120.0);
    EXPECT_EQ(RateLimitHeaders::retryAfter(429, H{{"Retry-After", "Sun, 22 Nov 2026 12:10:00 GMT"}},
                                           kNow),
              600.0);
    EXPECT_EQ(RateLimitHeaders::retryAfter(429, H{{"Retry-After", "later"}}, kNow), 300.0);
    EXPECT_EQ(RateLimitHeaders::retryAfter(429, H{}, kNow), 300.0);
    const auto in15 = QByteArray::number(kNow.toSecsSinceEpoch() + 900);
    EXPECT_EQ(RateLimitHeaders::retryAfter(429, H{{"X-RateLimit-Reset", in15}}, kNow), 900.0);
    EXPECT_EQ(RateLimitHeaders::retryAfter(403, H{{"X-RateLimit-Remaining", "0"}}, kNow), 300.0);
    EXPECT_FALSE(RateLimitHeaders::retryAfter(403, H{}, kNow));
    EXPECT_FALSE(RateLimitHeaders::retryAfter(403, H{{"x-ratelimit-remaining", "12"}}, kNow));
    EXPECT_FALSE(RateLimitHeaders::retryAfter(500, H{{"Retry-After", "60"}}, kNow));
}

TEST(UsageJSON, NumbersDatesAndTitles) {
    EXPECT_EQ(UsageJSON::number(QJsonValue(" 12.5 ")), 12.5);
    EXPECT_FALSE(UsageJSON::number(QJsonValue("twelve")));
    EXPECT_FALSE(UsageJSON::number(QJsonValue()));
    const QDateTime expected(QDate(2026, 11, 22), QTime(8, 30, 5), Qt::UTC);
    EXPECT_EQ(UsageJSON::date(QJsonValue("2026-11-22T08:30:05Z")), expected);
    EXPECT_EQ(UsageJSON::date(QJsonValue("2026-11-22T09:30:05.123456+01:00"))->toSecsSinceEpoch(),
              expected.toSecsSinceEpoch());
    EXPECT_EQ(UsageJSON::date(QJsonValue(static_cast<double>(expected.toSecsSinceEpoch()))),
              expected);
    EXPECT_EQ(UsageJSON::date(QJsonValue("2026-12-01")),
              QDateTime(QDate(2026, 12, 1), QTime(0, 0), Qt::UTC));
    EXPECT_FALSE(UsageJSON::date(QJsonValue("soon")));
    EXPECT_EQ(UsageJSON::title("opus"), "Opus");
    EXPECT_EQ(UsageJSON::title("oauth_apps"), "OAuth Apps");
    EXPECT_EQ(UsageJSON::windowTitle(18'000), "Session");
    EXPECT_EQ(UsageJSON::windowTitle(604'800), "Weekly");
    EXPECT_EQ(UsageJSON::windowTitle(86'400), "1 day");
    EXPECT_EQ(UsageJSON::windowTitle(259'200), "3 days");
    EXPECT_EQ(UsageJSON::windowTitle(28'800), "8-hour");
}

TEST(UsageLimit, PaceAgainstTheTimeGone) {
    UsageLimit l;
    l.used = 0.3;
    EXPECT_FALSE(l.paceMargin(kNow)); // no window, no pace
    l.window = 18'000;
    l.resetsAt = kNow.addSecs(9'000); // half the session gone
    EXPECT_DOUBLE_EQ(*l.elapsed(kNow), 0.5);
    EXPECT_DOUBLE_EQ(*l.paceMargin(kNow), 0.2);
    l.used = 1.12;
    EXPECT_EQ(l.remaining(), 0.0);
    l.resetsAt = kNow.addSecs(-60); // already past: the whole window is gone
    EXPECT_DOUBLE_EQ(*l.elapsed(kNow), 1.0);
}

TEST(ReportWords, TheLinesTheScreenAndTheCommandShow) {
    AgentUsageReport r;
    r.plan = QStringLiteral("Max 20x");
    r.account = QStringLiteral("octo");
    UsageLimit session; // half the session gone, 62% used: ahead of an even pace
    session.title = QStringLiteral("Session");
    session.used = 0.62;
    session.window = 18'000;
    session.resetsAt = kNow.addSecs(9'000);
    UsageLimit weekly; // half the week gone, 52% used: too close to the pace to say so
    weekly.title = QStringLiteral("Weekly");
    weekly.used = 0.52;
    weekly.window = 604'800;
    weekly.resetsAt = kNow.addSecs(302'400);
    weekly.detail = QStringLiteral("144 of 300 left");
    UsageLimit monthly; // no reset time, no pace
    monthly.title = QStringLiteral("Monthly");
    monthly.used = 1.004;
    r.limits = {session, weekly, monthly};
    r.credits = {{QStringLiteral("extra"), QStringLiteral("Extra Usage"), 12.345, 50.0},
                 {QStringLiteral("credits"), QStringLiteral("Credits"), 3, std::nullopt}};

    const ReportWords words = describe(r, kNow);
    EXPECT_EQ(words.about, "Max 20x · octo");
    ASSERT_EQ(words.limits.size(), 3u);
    EXPECT_EQ(words.limits[0].title, "Session");
    EXPECT_EQ(words.limits[0].text,
              "62% used · resets in 2 hours, 30 minutes · ahead of an even pace");
    EXPECT_EQ(words.limits[1].text, "52% used · 144 of 300 left · resets in 3 days, 12 hours");
    EXPECT_EQ(words.limits[2].text, "100% used");
    ASSERT_EQ(words.credits.size(), 2u);
    EXPECT_EQ(words.credits[0].title, "Extra Usage");
    EXPECT_EQ(words.credits[0].text, "$12.35 of $50.00 used");
    EXPECT_EQ(words.credits[1].text, "$3.00 used");

    r.plan.reset();
    EXPECT_EQ(describe(r, kNow).about, "octo");
    r.account.reset();
    EXPECT_TRUE(describe(r, kNow).about.isEmpty());
}

TEST(ClaudeUsage, LimitsInOrderWithExtraUsageAndThePlan) {
    const auto creds = ClaudeUsage::credentials(
        R"({"claudeAiOauth":{"accessToken":"sk-ant-oat01-x","expiresAt":1795348800000,
            "subscriptionType":"max","rateLimitTier":"default_claude_max_20x"}})");
    ASSERT_TRUE(creds);
    EXPECT_EQ(creds->expiresAt->toSecsSinceEpoch(), 1795348800);
    EXPECT_FALSE(ClaudeUsage::credentials(R"({"claudeAiOauth":{}})"));
    EXPECT_FALSE(ClaudeUsage::credentials("not json"));
    EXPECT_EQ(ClaudeUsage::planName(creds->rateLimitTier, creds->subscription), "Max 20x");
    EXPECT_EQ(ClaudeUsage::planName(std::nullopt, QString("pro")), "Pro");
    EXPECT_FALSE(ClaudeUsage::planName(std::nullopt, std::nullopt));

    // The shape of a real answer: percentages, ISO dates, null for unused model limits.
    const auto r = ClaudeUsage::report(R"({
        "five_hour": {"utilization": 112.0, "resets_at": "2026-11-22T14:00:00.421+00:00"},
        "seven_day": {"utilization": 35, "resets_at": "2026-11-27T09:00:00+00:00"},
        "seven_day_sonnet": {"utilization": "20", "resets_at": null},
        "seven_day_opus": null,
        "seven_day_oauth_apps": null,
        "extra_usage": {"is_enabled": true, "monthly_limit": 5000, "used_credits": 1234,
                        "utilization": 24.68}})",
                                       *creds, kNow);
    ASSERT_TRUE(r);
    ASSERT_EQ(r->limits.size(), 4u);
    EXPECT_EQ(r->limits[0].title, "Session");
    EXPECT_DOUBLE_EQ(r->limits[0].used, 1.12); // over the limit shows as such
    EXPECT_EQ(r->limits[0].window, 18'000.0);
    EXPECT_EQ(r->limits[1].title, "Weekly");
    EXPECT_EQ(r->limits[2].title, "Sonnet");
    EXPECT_FALSE(r->limits[2].resetsAt);
    EXPECT_EQ(r->limits[3].id, "extra");
    ASSERT_EQ(r->credits.size(), 1u);
    EXPECT_DOUBLE_EQ(r->credits[0].used, 12.34); // cents
    EXPECT_DOUBLE_EQ(*r->credits[0].limit, 50.0);
    EXPECT_EQ(r->plan, "Max 20x");
    EXPECT_FALSE(ClaudeUsage::report("[1,2]", *creds, kNow));
}

TEST(CodexUsage, WindowsCreditsApiKeysAndTheSessionLog) {
    const auto creds = CodexUsage::credentials(
        R"({"OPENAI_API_KEY":null,"tokens":{"access_token":"eyJ","account_id":"acc-1"}})");
    ASSERT_TRUE(creds);
    EXPECT_FALSE(creds->usesAPIKey);
    EXPECT_EQ(creds->accountID, "acc-1");
    const auto keyOnly = CodexUsage::credentials(R"({"OPENAI_API_KEY":"sk-proj-1"})");
    ASSERT_TRUE(keyOnly);
    EXPECT_TRUE(keyOnly->usesAPIKey);
    EXPECT_TRUE(keyOnly->accessToken.isEmpty());
    EXPECT_FALSE(CodexUsage::credentials(R"({"tokens":{}})"));

    const auto r = CodexUsage::report(R"({"plan_type":"plus","rate_limit":{
        "primary_window":{"used_percent":42,"limit_window_seconds":18000,"reset_after_seconds":3600},
        "secondary_window":{"used_percent":7.5,"limit_window_seconds":604800,
                            "reset_at":"2026-11-25T00:00:00Z"}},
        "credits":{"has_credits":true,"unlimited":false,"balance":"12.5"}})",
                                      kNow);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->plan, "Plus");
    ASSERT_EQ(r->limits.size(), 2u);
    EXPECT_EQ(r->limits[0].title, "Session");
    EXPECT_EQ(r->limits[0].resetsAt, kNow.addSecs(3600));
    EXPECT_EQ(r->limits[1].title, "Weekly");
    EXPECT_DOUBLE_EQ(r->limits[1].used, 0.075);
    EXPECT_EQ(r->notes, QStringList{"Credits: 12.50 left"});

    // A session-log line as Codex writes it.
    const auto line = CodexUsage::limitsFromLine(
        R"({"timestamp":"2026-11-22T10:00:00.000Z","type":"event_msg","payload":{"type":"token_count",)"
        R"("info":null,"rate_limits":{"primary":{"used_percent":55.0,"window_minutes":300,)"
        R"("resets_in_seconds":1200},"secondary":{"used_percent":12.0,"window_minutes":10080}}}})");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->second.size(), 2u);
    EXPECT_EQ(line->second[0].resetsAt, QDateTime(QDate(2026, 11, 22), QTime(10, 20), Qt::UTC));
    EXPECT_EQ(line->second[1].title, "Weekly");
    EXPECT_FALSE(CodexUsage::limitsFromLine(R"({"payload":{"type":"token_count"}})"));
    EXPECT_FALSE(CodexUsage::limitsFromLine(
        R"({"timestamp":"2026-11-22T10:00:00Z","payload":{"type":"agent_message","rate_limits":{}}})"));
}

TEST(CopilotUsage, PaidAndFreePlans) {
    EXPECT_EQ(CopilotUsage::pluginToken(
                  R"({"github.com:Iv1.b507a08c87ecfe98":{"user":"u","oauth_token":"ghu_abc"}})"),
              "ghu_abc");
    EXPECT_FALSE(CopilotUsage::pluginToken(R"({"ghe.example.com":{"oauth_token":"x"}})"));

    const auto paid = CopilotUsage::report(R"({"login":"octo","copilot_plan":"individual",
        "quota_reset_date":"2026-12-01","quota_snapshots":{
          "chat":{"unlimited":true,"percent_remaining":100},
          "completions":{"unlimited":true},
          "premium_interactions":{"entitlement":300,"remaining":201,"percent_remaining":67.0,
                                  "unlimited":false}}})",
                                           kNow);
    ASSERT_TRUE(paid);
    EXPECT_EQ(paid->plan, "Individual");
    EXPECT_EQ(paid->account, "octo");
    ASSERT_EQ(paid->limits.size(), 1u);
    EXPECT_EQ(paid->limits[0].title, "Premium Requests");
    EXPECT_NEAR(paid->limits[0].used, 0.33, 1e-9);
    EXPECT_EQ(paid->limits[0].detail, "201 of 300 left");
    EXPECT_EQ(paid->limits[0].resetsAt, QDateTime(QDate(2026, 12, 1), QTime(0, 0), Qt::UTC));
    EXPECT_EQ(paid->notes, (QStringList{"Chat: unlimited", "Code Completions: unlimited"}));

    const auto free = CopilotUsage::report(R"({"copilot_plan":"free",
        "limited_user_reset_date":"2026-12-05",
        "limited_user_quotas":{"chat":40,"completions":1500},
        "monthly_quotas":{"chat":50,"completions":2000}})",
                                           kNow);
    ASSERT_TRUE(free);
    ASSERT_EQ(free->limits.size(), 2u);
    EXPECT_EQ(free->limits[0].title, "Chat");
    EXPECT_DOUBLE_EQ(free->limits[0].used, 0.2);
    EXPECT_DOUBLE_EQ(free->limits[1].used, 0.25);
    EXPECT_FALSE(CopilotUsage::report("<html>", kNow));
}

TEST(OpenRouterUsage, KeyLimitCreditsAndSpend) {
    const auto r = OpenRouterUsage::report(
        R"({"data":{"label":"sk-or-v1-abc...xyz","usage":12.345,"limit":50,"is_free_tier":false,
            "usage_daily":0.42,"usage_weekly":3.1,"usage_monthly":12}})",
        R"({"data":{"total_credits":100,"total_usage":12.345}})", kNow);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->account, "sk-or-v1-abc...xyz");
    EXPECT_FALSE(r->plan);
    ASSERT_EQ(r->limits.size(), 1u);
    EXPECT_EQ(r->limits[0].detail, "$12.35 of $50.00");
    ASSERT_EQ(r->credits.size(), 1u);
    EXPECT_DOUBLE_EQ(*r->credits[0].remaining(), 87.655);
    EXPECT_EQ(r->notes, QStringList{"Spend: Today $0.42 · This week $3.10 · This month $12.00"});

    const auto free = OpenRouterUsage::report(
        R"({"data":{"label":"k","usage":0,"limit":null,"is_free_tier":true}})",
        R"({"data":{"total_credits":0,"total_usage":0}})", kNow);
    EXPECT_EQ(free->plan, "Free");
    EXPECT_TRUE(free->limits.empty());
    EXPECT_TRUE(free->notes.isEmpty());
    EXPECT_FALSE(OpenRouterUsage::report("{}", "oops", kNow));
}
