#include "app/monitor/system_monitor_model.h"
#include "core/settings/preferences.h"
#include "tests/support/fixture_tree.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QCoreApplication>
#include <cmath>
#include <gtest/gtest.h>

using namespace tarvik;

TEST(SystemMonitorModel, IntervalRules) {
    EXPECT_DOUBLE_EQ(clampedMonitorInterval(std::nullopt), 2.0);
    EXPECT_DOUBLE_EQ(clampedMonitorInterval(0.0), 2.0);
    EXPECT_DOUBLE_EQ(clampedMonitorInterval(-3.0), 2.0);
    EXPECT_DOUBLE_EQ(clampedMonitorInterval(std::nan("")), 2.0);
    EXPECT_DOUBLE_EQ(clampedMonitorInterval(0.5), 1.0);
    EXPECT_DOUBLE_EQ(clampedMonitorInterval(1.0), 1.0);
    EXPECT_DOUBLE_EQ(clampedMonitorInterval(3.5), 3.5);
    EXPECT_DOUBLE_EQ(clampedMonitorInterval(30.0), 10.0);

    EXPECT_DOUBLE_EQ(samplingInterval(2.0, /*onlyMenuBarLabel=*/true), 5.0);
    EXPECT_DOUBLE_EQ(samplingInterval(5.0, true), 5.0);
    EXPECT_DOUBLE_EQ(samplingInterval(7.0, true), 7.0);
    EXPECT_DOUBLE_EQ(samplingInterval(2.0, false), 2.0);
}

TEST(SystemMonitorModel, RunsWhileClientsHoldItAtTheirCadence) {
    test::TempHome home;
    Preferences prefs;
    test::FixtureTree tree(std::filesystem::path(TARVIK_FIXTURES) / "linux/debian12-vm");
    SamplerOptions options;
    options.root = tree.root();
    SystemMonitorModel model(prefs, options);
    EXPECT_FALSE(model.isRunning());

    model.acquire(MonitorClient::MenuBarLabel);
    EXPECT_TRUE(model.isRunning());
    EXPECT_DOUBLE_EQ(model.currentInterval(), 5.0); // only the tray label: slow
    model.acquire(MonitorClient::Window);
    EXPECT_DOUBLE_EQ(model.currentInterval(), 2.0);
    prefs.setValue(pref::kMonitorInterval, 0.25);
    EXPECT_DOUBLE_EQ(model.currentInterval(), 1.0);
    prefs.setValue(pref::kMonitorInterval, 30.0);
    EXPECT_DOUBLE_EQ(model.currentInterval(), 10.0);
    prefs.setValue(pref::kMonitorInterval, 1.0);

    model.release(MonitorClient::Window);
    EXPECT_TRUE(model.isRunning());
    EXPECT_DOUBLE_EQ(model.currentInterval(), 5.0);
    model.release(MonitorClient::MenuPanel); // never acquired: ignored
    EXPECT_TRUE(model.isRunning());
    model.release(MonitorClient::MenuBarLabel);
    EXPECT_FALSE(model.isRunning());
}

TEST(SystemMonitorModel, ReadingsArriveOnTheInterfaceThreadAndSessionTotalsAddUp) {
    test::TempHome home;
    Preferences prefs;
    prefs.setValue(pref::kMonitorInterval, 1.0);
    test::FixtureTree tree(std::filesystem::path(TARVIK_FIXTURES) / "linux/debian12-vm");
    SamplerOptions options;
    options.root = tree.root();
    SystemMonitorModel model(prefs, options);
    int readings = 0;
    QObject::connect(&model, &SystemMonitorModel::readingChanged, [&] {
        EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
        if (++readings == 1) {
            // Between the first and second sample eth0 receives 4096 bytes.
            tree.write("proc/net/dev", "Inter-|\n face |\n  eth0: 45540393 0 0 0 0 0 0 0 63001 "
                                       "0 0 0 0 0 0 0\n");
        }
    });
    model.acquire(MonitorClient::Window);
    test::waitUntil([&] { return readings >= 2; });
    ASSERT_GE(readings, 2);
    EXPECT_EQ(model.sessionTotals().received, 4096u);
    EXPECT_TRUE(model.latest()->cpu);
    const auto tray = model.menuBarReadings({MenuBarStat::Memory, MenuBarStat::Battery});
    EXPECT_NE(tray[0].compact, "—");
    EXPECT_EQ(tray[1].compact, "—"); // a VM has no battery
    model.resetSessionTotals();
    EXPECT_EQ(model.sessionTotals().received, 0u);

    // Once released, a sample still in flight is never applied.
    model.release(MonitorClient::Window);
    const int before = readings;
    test::pumpEventsFor(1500);
    EXPECT_EQ(readings, before);
}
