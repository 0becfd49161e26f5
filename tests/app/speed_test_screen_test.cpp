#include "app/speedtest/speed_test_model.h"
#include "app/speedtest/speed_test_screen.h"
#include "tests/support/speed_server.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QTemporaryDir>
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
    model.start(QString("Ethernet"));
    ASSERT_TRUE(test::waitUntil([&] { return !model.isRunning(); }));
    ASSERT_TRUE(model.error().isEmpty()) << model.error().toStdString();
    ASSERT_TRUE(model.lastResult());
    EXPECT_TRUE(screen.resultText().contains("Variation between pings"));
    EXPECT_TRUE(screen.resultText().contains("Web &amp; email: ") ||
                screen.resultText().contains("Web & email: "));
    EXPECT_EQ(screen.history()->topLevelItemCount(), 1);
    EXPECT_EQ(SpeedTestHistoryStore(path).load().size(), 1u); // saved as well as shown

    model.deleteResult(model.history().front().id);
    EXPECT_EQ(screen.history()->topLevelItemCount(), 0);
    EXPECT_TRUE(SpeedTestHistoryStore(path).load().empty());
}
