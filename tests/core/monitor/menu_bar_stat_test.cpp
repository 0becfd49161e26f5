#include "core/monitor/menu_bar_stat.h"

#include <gtest/gtest.h>

using namespace tarvik;
using V = std::vector<MenuBarStat>;

TEST(MenuBarStat, ReadingKeepsCaseOrderDropsEmptyPiecesAndIgnoresUnknownKeys) {
    EXPECT_EQ(parseMenuBarStats("battery,,cpu,volume"),
              (V{MenuBarStat::Cpu, MenuBarStat::Battery}));
    EXPECT_EQ(writeMenuBarStats({MenuBarStat::Battery, MenuBarStat::Cpu}), "cpu,battery");
    EXPECT_EQ(parseMenuBarStats("cpu,memory"), (V{MenuBarStat::Cpu, MenuBarStat::Memory}));
    EXPECT_EQ(parseMenuBarStats(""), V{});
    EXPECT_EQ(parseMenuBarStats(",,,"), V{});
    EXPECT_EQ(parseMenuBarStats("cpu,cpu"), V{MenuBarStat::Cpu});
    EXPECT_EQ(parseMenuBarStats("CPU, memory"), V{}); // keys are exact: no case folding, no trim
    EXPECT_EQ(
        parseMenuBarStats("agent,gpu,upload,download"),
        (V{MenuBarStat::Download, MenuBarStat::Upload, MenuBarStat::Gpu, MenuBarStat::Agent}));
}

TEST(MenuBarStat, WritingUsesCaseOrderAndEveryKeyRoundTrips) {
    EXPECT_EQ(writeMenuBarStats({}), "");
    V all(kAllMenuBarStats.rbegin(), kAllMenuBarStats.rend());
    const std::string stored = writeMenuBarStats(all);
    EXPECT_EQ(stored, "cpu,memory,download,upload,gpu,battery,agent");
    EXPECT_EQ(parseMenuBarStats(stored), V(kAllMenuBarStats.begin(), kAllMenuBarStats.end()));
}

TEST(MenuBarStat, LoadsWarnWhenHighChargeAndAgentShareWhenLowRatesNever) {
    for (auto stat : {MenuBarStat::Cpu, MenuBarStat::Memory, MenuBarStat::Gpu}) {
        EXPECT_EQ(level(stat, 0.2), ReadingLevel::Good);
        EXPECT_EQ(level(stat, 0.75), ReadingLevel::Watch);
        EXPECT_EQ(level(stat, 0.95), ReadingLevel::Critical);
    }
    for (auto stat : {MenuBarStat::Battery, MenuBarStat::Agent}) {
        EXPECT_EQ(level(stat, 0.95), ReadingLevel::Good);
        EXPECT_EQ(level(stat, 0.2), ReadingLevel::Watch);
        EXPECT_EQ(level(stat, 0.05), ReadingLevel::Critical);
    }
    for (auto stat : {MenuBarStat::Download, MenuBarStat::Upload}) {
        EXPECT_EQ(level(stat, 1.0), ReadingLevel::Neutral);
    }
}
