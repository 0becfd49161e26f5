// The Agents screen against local servers that answer like the services, with sign-ins and
// logs in a temporary home.
#include "app/agents/agents_panel_page.h"
#include "app/agents/agents_screen.h"
#include "app/agents/limit_bar.h"
#include "app/agents/spend_chart.h"
#include "app/overview/overview_screen.h"
#include "app/shell/app_models.h"
#include "app/shell/card.h"
#include "app/shell/panel_figure.h"
#include "tests/support/agent_services.h"
#include "tests/support/app_options.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QBarSeries>
#include <QBarSet>
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QToolButton>
#include <QToolTip>
#include <QValueAxis>
#include <cmath>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::optionsIn;
using tarvik::test::writeFile;

TEST(AgentsScreen, CardsWithBarsErrorsOrderAndTheTrayReading) {
    test::TempHome home;
    test::AgentServices services;
    writeFile(home.path() + "/.claude/.credentials.json",
              R"({"claudeAiOauth":{"accessToken":"tok","rateLimitTier":"default_claude_max_5x"}})");
    const QString resets = QDateTime::currentDateTimeUtc().addSecs(9000).toString(Qt::ISODate);
    services.server.answer(
        "/api/oauth/usage",
        {200,
         QString(R"({"five_hour":{"utilization":30,"resets_at":"%1"}})").arg(resets).toUtf8()});
    writeFile(home.path() + "/.codex/auth.json", R"({"tokens":{"access_token":"t"}})");
    services.server.answer("/backend-api/wham/usage", {429, "{}", {{"Retry-After", "600"}}});

    AppModels models(optionsIn(home));
    AgentsScreen screen(models.agents());
    screen.show();
    // Every card has its answer, and the screen has drawn them (it redraws after the model).
    ASSERT_TRUE(test::waitUntil([&] {
        return !models.agents().isLoading() &&
               screen.findChild<LimitBar*>("limit_claude_five_hour") != nullptr &&
               screen.findChild<QLabel*>("error_codex") != nullptr &&
               screen.findChild<QLabel*>("error_openRouter") != nullptr;
    }));
    auto* bar = screen.findChild<LimitBar*>("limit_claude_five_hour");
    EXPECT_DOUBLE_EQ(bar->used(), 0.3);
    ASSERT_TRUE(bar->evenPace());
    EXPECT_NEAR(*bar->evenPace(), 0.5, 0.01); // half of the five hours gone
    EXPECT_TRUE(screen.findChild<Card*>("card_claude")->findChild<QLabel*>() != nullptr);
    auto* limited = screen.findChild<QLabel*>("error_codex");
    ASSERT_NE(limited, nullptr);
    EXPECT_TRUE(limited->text().startsWith("The service is asking Tarvik to slow down."));
    EXPECT_TRUE(limited->text().contains("asks again after"));
    ASSERT_NE(screen.findChild<QLabel*>("error_openRouter"), nullptr);

    // A rate-limited provider is not asked again before its time.
    const auto asked = services.server.requests().size();
    screen.findChild<QPushButton*>("refreshAgents")->click();
    ASSERT_TRUE(test::waitUntil([&] { return !models.agents().isLoading(); }));
    int codexAgain = 0;
    for (std::size_t i = asked; i < services.server.requests().size(); ++i) {
        codexAgain += services.server.requests()[i].path == "/backend-api/wham/usage" ? 1 : 0;
    }
    EXPECT_EQ(codexAgain, 0);

    // The tray reading follows the first enabled agent.
    const auto reading =
        models.monitor().menuBarReadings({MenuBarStat::Agent}, models.agents().sessionReading());
    EXPECT_EQ(reading[0].compact, "70%");
    EXPECT_EQ(reading[0].words, "Claude session 70% left");

    // The tray panel's page: the share left as a figure and a bar, or why there is none.
    AgentsPanelPage page(models.agents());
    const auto* claude = page.findChild<PanelFigure*>("agent_claude");
    ASSERT_NE(claude, nullptr);
    EXPECT_EQ(claude->value(), "70% left");
    EXPECT_TRUE(claude->detail().startsWith("Session: 30% used")) << claude->detail().toStdString();
    EXPECT_NE(page.findChild<LimitBar*>(), nullptr);
    const auto* codex = page.findChild<PanelFigure*>("agent_codex");
    ASSERT_NE(codex, nullptr);
    EXPECT_EQ(codex->value(), "");
    EXPECT_EQ(codex->detail(), "Rate limited, will retry");
    EXPECT_EQ(page.findChild<QLabel*>("noAgents"), nullptr);

    // Order and visibility are kept in the settings.
    screen.findChild<QToolButton*>("down_claude")->click();
    QApplication::processEvents();
    EXPECT_EQ(models.preferences().value(pref::kAgentUsageOrder).toString(),
              "codex,claude,copilot,openRouter");
    const auto first =
        models.monitor().menuBarReadings({MenuBarStat::Agent}, models.agents().sessionReading());
    EXPECT_EQ(first[0].words, "Codex: Rate limited, will retry");
    screen.findChild<QCheckBox*>("enable_copilot")->setChecked(false);
    QApplication::processEvents();
    EXPECT_EQ(models.preferences().value(pref::kAgentUsageEnabled).toString(),
              "codex,claude,openRouter");
    EXPECT_EQ(screen.findChild<QLabel*>("error_copilot"), nullptr);

    // Without a keyring the key can't be kept, and the card says why.
    screen.findChild<QLineEdit*>("key_openRouter")->setText("sk-or-v1-x");
    screen.findChild<QPushButton*>("saveKey_openRouter")->click();
    EXPECT_TRUE(test::waitUntil([&] {
        auto* message = screen.findChild<QLabel*>("keyMessage_openRouter");
        return message != nullptr && !message->text().isEmpty();
    }));
    EXPECT_TRUE(screen.findChild<QLineEdit*>("key_openRouter")->text().isEmpty());

    // Smart Scan's tile: each shown agent's session, or why there is none.
    OverviewScreen overview(models.overview(), models.navigator(), models.monitor(),
                            &models.agents());
    EXPECT_EQ(overview.findChild<QLabel*>("agentLimitsTile")->text().split('\n').mid(0, 2),
              (QStringList{"Codex: Rate limited, will retry", "Claude: Session 30% used"}));
    screen.hide();
}

namespace {

// One answer of Claude Opus 4.5 in Claude Code's log, as it writes it.
QByteArray opusAnswer(const QString& id, int input, int output) {
    return QString(R"({"timestamp":"%1","requestId":"r-%2","message":{"id":"m-%2",)"
                   R"("model":"claude-opus-4-5-20251101","usage":{"input_tokens":%3,)"
                   R"("output_tokens":%4}}})"
                   "\n")
        .arg(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs), id)
        .arg(input)
        .arg(output)
        .toUtf8();
}

} // namespace

TEST(AgentsScreen, ACardThatWouldSayTheSameStaysAndANewAnswerReplacesIt) {
    test::TempHome home;
    test::AgentServices services;
    writeFile(home.path() + "/.claude/.credentials.json",
              R"({"claudeAiOauth":{"accessToken":"tok","subscriptionType":"pro"}})");
    services.server.answer("/api/oauth/usage", {200, R"({"five_hour":{"utilization":30}})"});
    AppModels models(optionsIn(home));
    AgentsScreen screen(models.agents());
    screen.show();
    auto used = [&screen] {
        const auto* bar = screen.findChild<LimitBar*>("limit_claude_five_hour");
        return bar != nullptr ? bar->used() : -1.0;
    };
    ASSERT_TRUE(test::waitUntil(
        [&] { return !models.agents().isLoading() && std::abs(used() - 0.3) < 1e-9; }));
    const QPointer<Card> claude = screen.findChild<Card*>("card_claude");
    ASSERT_FALSE(claude.isNull());

    // The same answer again: the card on screen stays, with the buttons already drawn.
    screen.findChild<QPushButton*>("refreshAgents")->click();
    ASSERT_TRUE(test::waitUntil([&] { return !models.agents().isLoading(); }));
    test::pumpEventsFor(200); // the screen redraws after the model
    EXPECT_FALSE(claude.isNull());

    services.server.answer("/api/oauth/usage", {200, R"({"five_hour":{"utilization":60}})"});
    screen.findChild<QPushButton*>("refreshAgents")->click();
    ASSERT_TRUE(test::waitUntil([&] { return std::abs(used() - 0.6) < 1e-9; }));
    EXPECT_TRUE(claude.isNull());
}

TEST(AgentsScreen, SpendFromTheLocalLogsByPeriodReadAgainOnRefreshAndCharted) {
    test::TempHome home;
    test::AgentServices services;
    const QString log = home.path() + "/.claude/projects/p/s.jsonl";
    writeFile(log, opusAnswer("1", 200'000, 1000));
    AppModels models(optionsIn(home));
    AgentsScreen screen(models.agents());
    screen.show();
    auto* total = screen.findChild<QLabel*>("spendTotal");
    ASSERT_TRUE(test::waitUntil([&] { return total->text().startsWith("$"); }));
    EXPECT_EQ(total->text(), "$1.02 · 201K tokens"); // 200K × $5 + 1K × $25 per million
    EXPECT_EQ(screen.findChildren<QLabel*>("modelLine").size(), 1);
    auto* chart = screen.findChild<SpendChart*>("spendChart");
    EXPECT_TRUE(chart->isHidden()); // one day is no series

    // Refresh reads the logs again as well as asking the services: an answer logged since
    // adds to the spend shown.
    QFile file(log);
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write(opusAnswer("2", 100'000, 0));
    file.close();
    auto* refresh = screen.findChild<QPushButton*>("refreshAgents");
    ASSERT_TRUE(test::waitUntil([&] { return refresh->isEnabled(); }));
    refresh->click();
    ASSERT_TRUE(test::waitUntil([&] { return total->text() == "$1.52 · 301K tokens"; }))
        << total->text().toStdString();

    // Thirty days are a bar a day, on a date axis and a dollar axis, a bar's figures over it.
    screen.findChild<QComboBox*>("spendPeriod")->setCurrentIndex(2);
    ASSERT_TRUE(
        test::waitUntil([&] { return !chart->isHidden() && !models.agents().isSpendLoading(); }));
    QChart* drawn = chart->view()->chart();
    ASSERT_EQ(drawn->series().size(), 1);
    QBarSet* bars = qobject_cast<QBarSeries*>(drawn->series().front())->barSets().front();
    ASSERT_EQ(bars->count(), 30);
    EXPECT_NEAR(bars->at(29), 1.525, 1e-9); // shown rounded to the cent
    EXPECT_EQ(bars->at(0), 0.0);
    auto* dollars = qobject_cast<QValueAxis*>(drawn->axes(Qt::Vertical).front());
    ASSERT_NE(dollars, nullptr);
    EXPECT_TRUE(dollars->labelFormat().startsWith("$"));
    EXPECT_GE(dollars->max(), 1.52);
    auto* dates = qobject_cast<QCategoryAxis*>(drawn->axes(Qt::Horizontal).front());
    ASSERT_NE(dates, nullptr);
    const QString today = QLocale().toString(QDate::currentDate(), "d MMM");
    EXPECT_EQ(dates->categoriesLabels().back(), today);
    EXPECT_EQ(dates->categoriesLabels().size(), 5); // every seventh day back from today
    const QString todaysBar =
        QLocale().toString(QDate::currentDate(), "ddd d MMM") + ": $1.52 · 301K tokens";
    EXPECT_EQ(chart->barText(29), todaysBar);
    emit bars->hovered(true, 29);
    EXPECT_EQ(QToolTip::text(), todaysBar);
    emit bars->hovered(false, 29);

    // A period without usage says so in a sentence, where the chart would be.
    screen.findChild<QComboBox*>("spendPeriod")->setCurrentIndex(1); // Yesterday
    auto* empty = screen.findChild<QLabel*>("spendEmpty");
    ASSERT_TRUE(test::waitUntil([&] { return !empty->isHidden(); }));
    EXPECT_EQ(empty->text(), "Claude Code and Codex logged no usage yesterday.");
    EXPECT_TRUE(chart->view()->isHidden());
    EXPECT_TRUE(total->text().isEmpty());
    EXPECT_TRUE(screen.findChildren<QLabel*>("modelLine").isEmpty());
    screen.hide();
}
