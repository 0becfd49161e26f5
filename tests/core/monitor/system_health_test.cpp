// The health check's rows, bounds, words and order.
#include "core/monitor/system_health.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

QStringList ids(const std::vector<HealthIssue>& issues) {
    QStringList out;
    for (const auto& i : issues) {
        out << i.id;
    }
    return out;
}

MemoryStats memory(std::optional<MemoryPressure> pressure) {
    MemoryStats m;
    m.total = 16'000'000'000;
    m.free = 8'000'000'000;
    m.compressed = 1'500'000'000;
    m.reportedPressure = pressure;
    return m;
}

} // namespace

TEST(SystemHealth, NothingKnownIsNothingWrong) {
    EXPECT_TRUE(SystemHealth::assess({}).empty());
    HealthInput calm;
    calm.memory = memory(MemoryPressure::Normal);
    calm.recentCPU = {0.2, 0.3, 0.1, 0.2, 0.2};
    calm.thermal = ThermalLevel::Fair;
    calm.disk = DiskUsage{1000, 100}; // exactly 10 % free
    calm.uptime = 1'209'600;          // exactly 14 days
    EXPECT_TRUE(SystemHealth::assess(calm).empty());
}

TEST(SystemHealth, EachRowAtItsBoundWithItsWords) {
    HealthInput in;
    in.memory = memory(MemoryPressure::Warning);
    const auto tight = SystemHealth::assess(in);
    ASSERT_EQ(ids(tight), QStringList{"memory"});
    EXPECT_EQ(tight[0].title, "Memory is getting tight");
    EXPECT_EQ(tight[0].detail, "1.5 GB is compressed to make room.");
    EXPECT_EQ(tight[0].remedy, HealthIssue::Remedy::ShowProcessesByMemory);

    in.memory = memory(MemoryPressure::Critical);
    in.memory->swapUsed = 4'000'000'001; // just over a quarter of memory
    const auto high = SystemHealth::assess(in);
    ASSERT_EQ(ids(high), (QStringList{"memory", "swap"})); // critical wins; swap on its own
    EXPECT_EQ(high[0].severity, HealthIssue::Severity::Critical);
    EXPECT_EQ(high[0].detail,
              "The system is compressing and swapping heavily. Quit apps you aren't using.");
    EXPECT_EQ(high[1].detail,
              "4.0 GB of memory has been written to disk, which slows things down.");
    EXPECT_EQ(high[1].symbol, "arrow.left.arrow.right");
    in.memory->swapUsed = 4'000'000'000;
    EXPECT_EQ(ids(SystemHealth::assess(in)), QStringList{"memory"});

    HealthInput cpu;
    cpu.recentCPU = {1, 1, 1, 1};
    EXPECT_TRUE(SystemHealth::assess(cpu).empty()); // four points are not yet "a while"
    cpu.recentCPU = {0.86, 0.86, 0.86, 0.86, 0.86};
    cpu.topProcess = QStringLiteral("ffmpeg");
    const auto busy = SystemHealth::assess(cpu);
    ASSERT_EQ(ids(busy), QStringList{"cpu"});
    EXPECT_EQ(busy[0].detail, "Running 86% for a while. ffmpeg is the busiest process.");
    EXPECT_EQ(busy[0].remedy, HealthIssue::Remedy::ShowProcessesByCPU);
    cpu.recentCPU = {0.85, 0.85, 0.85, 0.85, 0.85};
    EXPECT_TRUE(SystemHealth::assess(cpu).empty());

    HealthInput hot;
    hot.thermal = ThermalLevel::Serious;
    auto warm = SystemHealth::assess(hot);
    ASSERT_EQ(ids(warm), QStringList{"thermal"});
    EXPECT_EQ(warm[0].severity, HealthIssue::Severity::Warning);
    EXPECT_EQ(warm[0].title, "Your computer is running hot");
    EXPECT_EQ(warm[0].symbol, "thermometer.high");
    hot.thermal = ThermalLevel::Critical;
    EXPECT_EQ(SystemHealth::assess(hot)[0].severity, HealthIssue::Severity::Critical);

    HealthInput full;
    full.disk = DiskUsage{1'000'000'000'000, 99'999'999'999};
    const auto disk = SystemHealth::assess(full);
    ASSERT_EQ(ids(disk), QStringList{"disk"});
    EXPECT_EQ(disk[0].detail,
              "Only 100 GB left. The system needs free space for memory swap and updates.");
    EXPECT_EQ(disk[0].remedy, HealthIssue::Remedy::OpenSystemJunk);
    full.disk = DiskUsage{0, 0};
    EXPECT_TRUE(SystemHealth::assess(full).empty());

    HealthInput up;
    up.uptime = 1'209'601;
    const auto restart = SystemHealth::assess(up);
    ASSERT_EQ(ids(restart), QStringList{"uptime"});
    EXPECT_TRUE(restart[0].detail.startsWith("Your computer has been up for "));
    EXPECT_TRUE(
        restart[0].detail.endsWith(". Restarting clears out temporary files and stuck processes."));
    EXPECT_EQ(restart[0].remedy, HealthIssue::Remedy::ExplainRestart);
}

TEST(SystemHealth, BatteryRowsAndTheMostSevereFirst) {
    HealthInput in;
    in.battery = BatteryInfo{};
    in.battery->charge = 0.09;
    in.battery->health = 0.79;
    in.battery->cycleCount = 812;
    in.uptime = 2'000'000;
    in.thermal = ThermalLevel::Serious;
    const auto issues = SystemHealth::assess(in);
    // Critical first; the warnings keep the check order.
    ASSERT_EQ(ids(issues), (QStringList{"battery-low", "thermal", "battery-health", "uptime"}));
    EXPECT_EQ(issues[0].detail, "9% left. Plug in soon.");
    EXPECT_TRUE(issues[0].title.startsWith("Battery "));
    EXPECT_EQ(issues[2].detail, "It holds 79% of its original charge after 812 cycles. "
                                "Consider a service.");

    in.battery->cycleCount.reset();
    in.battery->isCharging = true; // charging: not low, however empty
    const auto charging = SystemHealth::assess(in);
    EXPECT_FALSE(ids(charging).contains("battery-low"));
    EXPECT_EQ(charging[1].detail, "It holds 79% of its original charge. Consider a service.");
    in.battery->isCharging = false;
    in.battery->source = PowerSource::AcPower;
    EXPECT_FALSE(ids(SystemHealth::assess(in)).contains("battery-low"));
}
