#include "core/monitor/menu_bar_readings.h"
#include "core/monitor/reading_report.h"
#include "core/monitor/system_sampler.h"
#include "tests/support/fixture_tree.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {

const std::filesystem::path kFixtures = TARVIK_FIXTURES;

// A machine whose counters the test moves by hand, with clocks the test sets.
struct Machine {
    test::FixtureTree tree;
    SamplerClocks clocks;
    std::unique_ptr<SystemSampler> sampler;

    Machine() {
        setCounters(1000, 1000, 100, 50, 1000, 500);
        tree.write("proc/meminfo", "MemTotal: 1000 kB\nMemFree: 500 kB\nMemAvailable: 600 kB\n");
        tree.write("proc/loadavg", "0.50 0.40 0.30 1/100 42\n");
        tree.write("sys/block/sda/.keep", "");
        tree.write("sys/class/net/eth0/flags", "0x1003\n");
        SamplerOptions options;
        options.root = tree.root();
        options.clocks = [this] {
            return clocks;
        };
        options.gpu = [](const std::filesystem::path&) {
            return std::make_unique<GpuMonitor>(std::vector<std::unique_ptr<GpuSource>>{});
        };
        sampler = std::make_unique<SystemSampler>(options);
    }
    void setCounters(std::uint64_t user, std::uint64_t idle, std::uint64_t rx, std::uint64_t tx,
                     std::uint64_t readSectors, std::uint64_t writtenSectors) {
        tree.write("proc/stat", "cpu  0 0 0 0\ncpu0 " + std::to_string(user) + " 0 0 " +
                                    std::to_string(idle) + "\nbtime 1700000000\n");
        tree.write("proc/net/dev", "Inter-|\n face |\n  eth0: " + std::to_string(rx) +
                                       " 0 0 0 0 0 0 0 " + std::to_string(tx) + " 0 0 0 0 0 0 0\n");
        tree.write("proc/diskstats", "8 0 sda 1 0 " + std::to_string(readSectors) + " 0 1 0 " +
                                         std::to_string(writtenSectors) + " 0 0 0 0\n");
    }
    void advance(double awakeSeconds, double asleepSeconds = 0) {
        clocks.monotonicNs += static_cast<std::int64_t>(awakeSeconds * 1e9);
        clocks.boottimeNs += static_cast<std::int64_t>((awakeSeconds + asleepSeconds) * 1e9);
    }
};

} // namespace

TEST(SystemSampler, RatesComeFromTheSecondSampleOn) {
    Machine m;
    const SystemReading first = m.sampler->sample();
    EXPECT_FALSE(first.cpu);
    ASSERT_TRUE(first.network);
    EXPECT_EQ(first.network->firstBytes, 0u);
    EXPECT_DOUBLE_EQ(first.network->firstPerSecond, 0.0);
    EXPECT_EQ(first.bootTime, 1700000000);
    EXPECT_DOUBLE_EQ(first.loadAverage->fifteen, 0.30);
    EXPECT_FALSE(first.battery);
    EXPECT_FALSE(first.gpu);

    m.advance(2.0);
    m.setCounters(1300, 1100, 2100, 450, 3000, 500);
    const SystemReading second = m.sampler->sample();
    ASSERT_TRUE(second.cpu);
    EXPECT_DOUBLE_EQ(second.cpu->user, 0.75);
    EXPECT_EQ(second.network->firstBytes, 2000u);
    EXPECT_DOUBLE_EQ(second.network->firstPerSecond, 1000.0);
    EXPECT_DOUBLE_EQ(second.network->secondPerSecond, 200.0);
    EXPECT_EQ(second.disk->firstBytes, 2000u * 512);
    EXPECT_DOUBLE_EQ(second.disk->firstPerSecond, 512000.0);
    EXPECT_EQ(second.disk->secondBytes, 0u);
}

TEST(SystemSampler, AResumeFromSleepStartsAfreshInsteadOfSpiking) {
    Machine m;
    m.sampler->sample();
    m.advance(2.0, /*asleepSeconds=*/3600);
    m.setCounters(900000, 9000000, 50'000'000'000, 450, 3000, 500); // moved over the night
    const SystemReading resumed = m.sampler->sample();
    EXPECT_FALSE(resumed.cpu);
    EXPECT_EQ(resumed.network->firstBytes, 0u);
    EXPECT_DOUBLE_EQ(resumed.disk->firstPerSecond, 0.0);

    m.advance(1.0);
    m.setCounters(900010, 9000010, 50'000'001'000, 450, 3000, 500);
    const SystemReading next = m.sampler->sample();
    ASSERT_TRUE(next.cpu);
    EXPECT_DOUBLE_EQ(next.cpu->user, 0.5);
    EXPECT_DOUBLE_EQ(next.network->firstPerSecond, 1000.0);

    // The same when the window asks for it (logind told it the machine woke up).
    m.sampler->resetBaselines();
    m.advance(1.0);
    EXPECT_FALSE(m.sampler->sample().cpu);
}

TEST(SystemSampler, MissingAndDamagedFilesEmptyTheirPartOnly) {
    Machine m;
    m.sampler->sample();
    m.advance(1.0);
    m.tree.remove("proc/net/dev");
    m.tree.write("proc/meminfo", "");
    m.tree.write("proc/loadavg", "0.5 nonsense");
    m.tree.write("proc/diskstats", "\0\0\0garbage");
    const SystemReading r = m.sampler->sample();
    EXPECT_FALSE(r.network);
    EXPECT_FALSE(r.memory);
    EXPECT_FALSE(r.loadAverage);
    ASSERT_TRUE(r.disk);
    EXPECT_EQ(r.disk->firstBytes, 0u);
    ASSERT_TRUE(r.cpu); // the parts that are fine still arrive

    // Coming back, the network starts afresh rather than counting from nothing.
    m.advance(1.0);
    m.setCounters(1000, 1000, 5000, 50, 1000, 500);
    EXPECT_EQ(m.sampler->sample().network->firstBytes, 0u);

    test::FixtureTree empty;
    SamplerOptions options;
    options.root = empty.root();
    SystemSampler nothing(options);
    const SystemReading none = nothing.sample();
    EXPECT_FALSE(none.cpu || none.memory || none.network || none.disk || none.loadAverage ||
                 none.battery || none.bootTime);
    EXPECT_EQ(nothing.topology().logicalCores, 0);
}

TEST(SystemSampler, CapturedMachinesGiveCompleteReadingsAndReports) {
    for (const char* machine : {"linux/procfs", "linux/node-exporter", "linux/debian12-vm"}) {
        SamplerOptions options;
        options.root = kFixtures / machine;
        SystemSampler sampler(options);
        const SystemReading r = sampler.sample();
        EXPECT_TRUE(r.memory) << machine;
        EXPECT_TRUE(r.loadAverage) << machine;
        EXPECT_TRUE(r.bootTime) << machine;
        EXPECT_GT(sampler.topology().logicalCores, 0) << machine;
        const auto rows = describeReading(r, sampler.topology());
        EXPECT_EQ(rows.front().value.left(10), "Measuring…") << machine;
        const QJsonObject json = toJson(r, sampler.topology());
        EXPECT_TRUE(json["cpu"].isNull()) << machine; // one sample: no CPU figure yet
        EXPECT_GT(json["memory"]["total"].toDouble(), 0) << machine;
    }
}

TEST(MenuBarReadings, CompactFiguresAndADashForWhatTheMachineCannotGive) {
    SystemReading r;
    r.cpu = CPUUsage{0.20, 0.034};
    r.network = TransferRates{1'234'567, 850, 0, 0};
    std::vector<MenuBarStat> all(kAllMenuBarStats.begin(), kAllMenuBarStats.end());
    const auto readings =
        menuBarReadings(r, {MenuBarStat::Battery, MenuBarStat::Cpu, MenuBarStat::Download,
                            MenuBarStat::Upload, MenuBarStat::Gpu, MenuBarStat::Agent});
    ASSERT_EQ(readings.size(), 6u);
    EXPECT_EQ(readings[0].stat, MenuBarStat::Cpu); // case order, not the order asked
    EXPECT_EQ(readings[0].compact, "23%");
    EXPECT_EQ(readings[0].words, "CPU 23%");
    EXPECT_EQ(readings[1].compact, "1.2M");
    EXPECT_EQ(readings[1].words, "Download 1.2 MB/s");
    EXPECT_EQ(readings[2].compact, "0");
    EXPECT_EQ(readings[3].compact, "—"); // no GPU
    EXPECT_FALSE(readings[3].fraction);
    EXPECT_EQ(readings[4].compact, "—"); // no battery
    EXPECT_EQ(readings[4].words, "Battery not available");
    EXPECT_EQ(readings[5].compact, "—");

    const auto before = menuBarReadings(std::nullopt, all); // no reading yet
    for (const auto& reading : before) {
        EXPECT_EQ(reading.compact, "—");
    }
    EXPECT_EQ(compactRate(999), "0");
    EXPECT_EQ(compactRate(1000), "1.0K");
    EXPECT_EQ(compactRate(850'000), "850K");
    EXPECT_EQ(compactRate(999'600), "1.0M");
    EXPECT_EQ(compactRate(12'300'000), "12M");
    EXPECT_EQ(compactRate(3.4e9), "3.4G");
}
