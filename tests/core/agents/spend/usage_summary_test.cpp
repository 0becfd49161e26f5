// The periods by the local calendar, and a period's spend by model and by day.
#include "core/agents/spend/local_days.h"
#include "core/agents/spend/usage_summary.h"

#include <QStringList>
#include <QTimeZone>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <string_view>

using namespace tarvik;

namespace {

// Local wall-clock time in mid-January, away from any daylight-saving change.
QDateTime local(int month, int day, int h, int m = 0, int s = 0) {
    return QDateTime(QDate(month == 12 ? 2024 : 2025, month, day), QTime(h, m, s));
}

TokenUsageEvent event(const char* model, const QDateTime& when, std::int64_t input,
                      std::int64_t output = 0) {
    TokenUsageEvent e;
    e.model = QString::fromLatin1(model);
    e.date = when.toUTC();
    e.input = input;
    e.output = output;
    return e;
}

QStringList models(const UsageSummary& s) {
    QStringList out;
    for (const ModelLine& l : s.models) {
        out << l.model;
    }
    return out;
}

} // namespace

TEST(UsagePeriod, NamesAndIntervalsAroundMidnight) {
    for (UsagePeriod p : kAllUsagePeriods) {
        EXPECT_EQ(usagePeriodFromRaw(rawValue(p)), p);
    }
    EXPECT_EQ(rawValue(UsagePeriod::Last30Days), "30d");
    EXPECT_EQ(title(UsagePeriod::Last30Days), "30 Days");
    EXPECT_EQ(title(UsagePeriod::Yesterday), "Yesterday");
    EXPECT_FALSE(usagePeriodFromRaw(QStringLiteral("week")));

    // Half a minute into the 15th, given in UTC as the logs are.
    const QDateTime now = local(1, 15, 0, 0, 30).toUTC();
    const UsageInterval today = interval(UsagePeriod::Today, now);
    EXPECT_EQ(today.start, local(1, 15, 0));
    EXPECT_EQ(today.end, now.addSecs(1));
    EXPECT_TRUE(today.contains(now));
    EXPECT_FALSE(today.contains(local(1, 14, 23, 59, 59)));
    EXPECT_FALSE(today.contains(now.addSecs(1)));

    const UsageInterval yesterday = interval(UsagePeriod::Yesterday, now);
    EXPECT_EQ(yesterday.start, local(1, 14, 0));
    EXPECT_EQ(yesterday.end, local(1, 15, 0));
    EXPECT_TRUE(yesterday.contains(local(1, 14, 23, 59, 59)));
    EXPECT_FALSE(yesterday.contains(local(1, 15, 0)));

    const UsageInterval month = interval(UsagePeriod::Last30Days, now);
    EXPECT_EQ(month.start, local(12, 17, 0)); // the 15th and the 29 days before it
    EXPECT_EQ(month.end, now.addSecs(1));

    // A second before midnight is still the 14th.
    EXPECT_EQ(interval(UsagePeriod::Today, local(1, 14, 23, 59, 59)).start, local(1, 14, 0));
}

TEST(UsageSummary, ThePeriodsEventsByModelCostliestFirst) {
    const QDateTime now = local(1, 15, 12);
    const std::vector<TokenUsageEvent> events = {
        event("claude-opus-4-5", local(1, 15, 9), 1'000'000),        // $5
        event("claude-sonnet-4-5", local(1, 15, 10), 1'000'000),     // $3
        event("claude-sonnet-4-5", local(1, 15, 11), 0, 200'000),    // $3
        event("gpt-5-codex-high", local(1, 15, 8), 1'100'000),       // no price
        event("mystery", local(1, 15, 1), 10),                       // no price
        event("claude-opus-4-5", local(1, 14, 23, 59, 59), 100'000), // yesterday: $0.50
        event("claude-opus-4-5", now.addSecs(2), 1'000'000),         // not yet
    };
    const UsageSummary today = UsageSummary::of(events, UsagePeriod::Today, now);
    EXPECT_DOUBLE_EQ(today.totalCost, 11.0);
    EXPECT_EQ(today.totalTokens, 3'300'010);
    // A model without a price goes by tokens: 1.1M sits between Sonnet's 1.2M and Opus's 1M.
    EXPECT_EQ(models(today),
              (QStringList{"claude-sonnet-4-5", "gpt-5-codex-high", "claude-opus-4-5", "mystery"}));
    EXPECT_DOUBLE_EQ(*today.models[0].cost, 6.0);
    EXPECT_EQ(today.models[0].tokens, 1'200'000);
    EXPECT_FALSE(today.models[1].cost);
    EXPECT_EQ(today.models[1].tokens, 1'100'000);

    const UsageSummary yesterday = UsageSummary::of(events, UsagePeriod::Yesterday, now);
    EXPECT_DOUBLE_EQ(yesterday.totalCost, 0.5);
    EXPECT_EQ(models(yesterday), QStringList{"claude-opus-4-5"});
    EXPECT_EQ(UsageSummary::of(events, UsagePeriod::Last30Days, now).totalTokens, 3'400'010);
    EXPECT_TRUE(UsageSummary::of({}, UsagePeriod::Today, now).models.empty());
}

TEST(UsageSummary, TheTotalIsTheShownLinesAddedInTheirOrderToTheLastDigit) {
    // Forty models with prices and odd token counts: added in any other order (the hash's,
    // which changes from run to run), the total's last digit would change too.
    const QDateTime now = local(1, 15, 12);
    std::vector<TokenUsageEvent> events;
    for (int i = 0; i < 40; ++i) {
        const QByteArray model =
            (i % 2 ? "claude-opus-4-5-" : "claude-sonnet-4-") + QByteArray::number(i);
        events.push_back(event(model.constData(), local(1, 15, 9), 1'234'567 + i * 7'919, i * 31));
    }
    const UsageSummary today = UsageSummary::of(events, UsagePeriod::Today, now);
    ASSERT_EQ(today.models.size(), 40u);
    double total = 0;
    for (const ModelLine& l : today.models) {
        ASSERT_TRUE(l.cost) << l.model.toStdString();
        total += *l.cost;
    }
    EXPECT_EQ(today.totalCost, total);
}

TEST(DailySpend, EveryDayOfThePeriodOldestFirstWithEmptyDaysAtZero) {
    const QDateTime now = local(1, 15, 12);
    const std::vector<TokenUsageEvent> events = {
        event("claude-sonnet-4-5", local(1, 15, 1), 1'000'000),    // $3
        event("claude-opus-4-5", local(1, 13, 23, 30), 0, 40'000), // $1
        event("mystery", local(1, 13, 0, 10), 500),                // tokens, no cost
        event("claude-sonnet-4-5", local(12, 17, 0), 100),         // the first day
        event("claude-sonnet-4-5", local(12, 16, 23, 59), 100),    // before the period
    };
    const auto month = DailySpend::series(events, UsagePeriod::Last30Days, now);
    ASSERT_EQ(month.size(), 30u);
    EXPECT_EQ(month.front().day, QDate(2024, 12, 17));
    EXPECT_EQ(month.front().tokens, 100);
    EXPECT_EQ(month.back().day, QDate(2025, 1, 15));
    EXPECT_DOUBLE_EQ(month.back().cost, 3.0);
    EXPECT_DOUBLE_EQ(month[27].cost, 1.0); // the 13th
    EXPECT_EQ(month[27].tokens, 40'500);
    EXPECT_EQ(month[28].day, QDate(2025, 1, 14));
    EXPECT_EQ(month[28].tokens, 0);
    EXPECT_DOUBLE_EQ(month[28].cost, 0.0);

    const auto yesterday = DailySpend::series(events, UsagePeriod::Yesterday, now);
    ASSERT_EQ(yesterday.size(), 1u);
    EXPECT_EQ(yesterday[0].day, QDate(2025, 1, 14));
    EXPECT_EQ(yesterday[0].tokens, 0);
    // A second before midnight the day is still the only one.
    const auto late = DailySpend::series(events, UsagePeriod::Today, local(1, 15, 23, 59, 59));
    ASSERT_EQ(late.size(), 1u);
    EXPECT_EQ(late[0].tokens, 1'000'000);
}

TEST(LocalDays, SameDayAsTheZonesOwnConversionAcrossOffsetChanges) {
    // Zones that shift by half an hour, sit 45 minutes off the hour or skip a whole day: a year
    // in steps of 7 minutes 13 seconds, and closely around each change.
    const QByteArray saved = qgetenv("TZ");
    const bool hadZone = qEnvironmentVariableIsSet("TZ");
    for (const char* zone : {"Europe/Berlin", "America/St_Johns", "Australia/Lord_Howe",
                             "Pacific/Chatham", "Pacific/Apia", "America/Sao_Paulo", "UTC"}) {
        qputenv("TZ", zone);
        ::tzset();
        LocalDays days;
        auto check = [&](qint64 ms) {
            const QDateTime t = QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
            ASSERT_EQ(days.of(t), t.toLocalTime().date()) << zone << " " << ms;
        };
        const qint64 yearStart =
            QDateTime(QDate(2011, 1, 1), QTime(0, 0), Qt::UTC).toMSecsSinceEpoch();
        for (qint64 ms = yearStart; ms < yearStart + 366LL * 86400000; ms += 433000) {
            check(ms);
        }
        // Around each change (Apia skipped 30 December 2011), every 30 seconds for two hours.
        const auto changes = QTimeZone(zone).transitions(
            QDateTime::fromMSecsSinceEpoch(yearStart, Qt::UTC),
            QDateTime::fromMSecsSinceEpoch(yearStart + 366LL * 86400000, Qt::UTC));
        EXPECT_EQ(changes.empty(), std::string_view(zone) == "UTC") << zone;
        for (const auto& change : changes) {
            const qint64 at = change.atUtc.toMSecsSinceEpoch();
            for (qint64 ms = at - 3600000; ms < at + 3600000; ms += 30000) {
                check(ms);
            }
        }
        const qint64 before =
            QDateTime(QDate(1969, 12, 31), QTime(12, 0), Qt::UTC).toMSecsSinceEpoch();
        for (qint64 ms = before; ms < before + 86400000; ms += 59999) {
            check(ms); // instants before 1970, where division rounds the other way
        }
    }
    if (hadZone) {
        qputenv("TZ", saved);
    } else {
        qunsetenv("TZ");
    }
    ::tzset();
}
