#include "app/agents/agents_screen.h"
#include "app/shell/app_models.h"
#include "app/speedtest/speed_test_model.h"
#include "app/speedtest/speed_test_screen.h"
#include "tests/support/agent_services.h"
#include "tests/support/app_options.h"
#include "tests/support/shared_pool_taken.h"
#include "tests/support/speed_server.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace tarvik;

TEST(SpeedTestScreen, ATestFillsTheResultAndTheHistoryWhichCanBeTrimmed) {
    test::ServerThread local;
    QTemporaryDir dir;
    const SpeedTestConfiguration config = local.shortTest();
    const QString path = dir.path() + "/Tarvik/speedtests.json";
    SpeedTestModel model([config] { return config; }, SpeedTestHistoryStore(path));
    SpeedTestScreen screen(model);
    auto* noHistory = screen.findChild<QLabel*>("noHistory");
    ASSERT_NE(noHistory, nullptr);
    // No tests yet: a sentence, not an empty table.
    EXPECT_FALSE(noHistory->isHidden());
    EXPECT_TRUE(screen.history()->isHidden());
    model.start(QString("Ethernet"));
    ASSERT_TRUE(test::waitUntil([&] { return !model.isRunning(); }));
    ASSERT_TRUE(model.error().isEmpty()) << model.error().toStdString();
    EXPECT_TRUE(noHistory->isHidden());
    EXPECT_FALSE(screen.history()->isHidden());
    ASSERT_TRUE(model.lastResult());
    EXPECT_TRUE(screen.resultText().contains("Variation between pings"));
    EXPECT_TRUE(screen.resultText().contains("Web &amp; email: ") ||
                screen.resultText().contains("Web & email: "));
    EXPECT_EQ(screen.history()->topLevelItemCount(), 1);
    EXPECT_EQ(SpeedTestHistoryStore(path).load().size(), 1u); // saved as well as shown

    model.deleteResult(model.history().front().id);
    EXPECT_EQ(screen.history()->topLevelItemCount(), 0);
    EXPECT_TRUE(SpeedTestHistoryStore(path).load().empty());
    EXPECT_FALSE(noHistory->isHidden());
}

// The agents' requests wait on their services, as offline they wait for the network to give up.
// A speed test started meanwhile fails at once with its own error, whatever else is waiting.
TEST(SpeedTestScreen, AnUnreachableServerFailsAtOnceWhileTheAgentsWaitForTheirServices) {
    test::TempHome home;
    test::AgentServices services;
    test::writeFile(home.path() + "/.claude/.credentials.json",
                    R"({"claudeAiOauth":{"accessToken":"tok"}})");
    test::writeFile(home.path() + "/.codex/auth.json", R"({"tokens":{"access_token":"t"}})");
    services.server.answer("/api/oauth/usage", {200, "{}", {}, 30'000});
    services.server.answer("/backend-api/wham/usage", {200, "{}", {}, 30'000});
    // As on a two-core machine: two threads in the shared pool, as many as requests waiting.
    QThreadPool& shared = *QThreadPool::globalInstance();
    const auto restore = qScopeGuard(
        [&shared, threads = shared.maxThreadCount()] { shared.setMaxThreadCount(threads); });
    shared.setMaxThreadCount(2);

    AppModels models(test::optionsIn(home));
    models.preferences().setValue(pref::kSpeedTestBaseURL, QString("http://127.0.0.1:1/"));
    std::optional<qint64> finishedAfter;
    QElapsedTimer clock; // from opening Agents: the window must not stall meanwhile either
    QObject::connect(&models.speedTest(), &SpeedTestModel::finished,
                     [&] { finishedAfter = clock.elapsed(); });
    clock.start();
    {
        AgentsScreen agents(models.agents());
        agents.show();
        ASSERT_TRUE(test::waitUntil([&] { return services.server.requests().size() >= 2; }));
    }
    SpeedTestScreen screen(models.speedTest());
    screen.show();
    models.speedTest().start(QString("Ethernet"));
    ASSERT_TRUE(test::waitUntil([&] { return finishedAfter.has_value(); }, 40'000));
    EXPECT_LT(*finishedAfter, 5000); // long before the agents' services answer
    EXPECT_TRUE(models.speedTest().error().startsWith("Couldn't reach the speed test server. "))
        << models.speedTest().error().toStdString();
    EXPECT_TRUE(screen.resultText().contains("Couldn't reach the speed test server."));
    EXPECT_TRUE(models.agents().isLoading()); // the agents were still waiting all along
}

// Scans, brew and other jobs may take every thread of the shared pool for minutes; a test never
// waits for one.
TEST(SpeedTestScreen, ATestStartsAtOnceWhenEverySharedThreadIsTaken) {
    QTemporaryDir dir;
    SpeedTestConfiguration refused;
    refused.baseURL = QUrl("http://127.0.0.1:1/");
    SpeedTestModel model([refused] { return refused; },
                         SpeedTestHistoryStore(dir.path() + "/speedtests.json"));
    const test::SharedPoolTaken taken;
    model.start(std::nullopt);
    ASSERT_TRUE(test::waitUntil([&] { return !model.isRunning(); }, 5000));
    EXPECT_TRUE(model.error().startsWith("Couldn't reach the speed test server. "));
}
