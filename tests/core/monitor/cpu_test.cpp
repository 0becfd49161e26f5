#include "core/monitor/cpu.h"
#include "core/sys/system_files.h"
#include "tests/support/fixture_tree.h"

#include <gtest/gtest.h>
#include <limits>

using namespace tarvik;

namespace {
const std::filesystem::path kFixtures = TARVIK_FIXTURES;
std::string read(const std::string& rel) {
    return platform::readSmallFile(kFixtures, rel).value_or("");
}
} // namespace

TEST(CpuTicks, CapturedProcStatFilesGiveEveryCoreAndTheBootTime) {
    const ProcStat procfs = parseProcStat(read("linux/procfs/proc/stat"));
    ASSERT_EQ(procfs.cores.size(), 8u);
    // cpu0 44490 19 21045 1087069 220 1 3410 0 0 0: iowait is idle, irq/softirq/steal system.
    EXPECT_EQ(procfs.cores[0].user, 44490u);
    EXPECT_EQ(procfs.cores[0].nice, 19u);
    EXPECT_EQ(procfs.cores[0].system, 21045u + 1 + 3410);
    EXPECT_EQ(procfs.cores[0].idle, 1087069u + 220);
    EXPECT_EQ(procfs.bootTime, 1418183276);

    // Guest time is already part of user time and must not be added twice.
    const ProcStat node = parseProcStat(read("linux/node-exporter/proc/stat"));
    ASSERT_FALSE(node.cores.empty());
    EXPECT_EQ(node.cores[0].user, 44490u);

    EXPECT_EQ(parseProcStat(read("linux/debian12-vm/proc/stat")).cores.size(), 2u);
}

TEST(CpuTicks, DamagedLinesLoseOnlyTheirCore) {
    const ProcStat s = parseProcStat("cpu  1 2 3 4\n"
                                     "cpu0 10 0 10 80\n"
                                     "cpu1 x y z w\n"
                                     "cpu2 1 2\n"
                                     "cpu3 5 0 5 90 0 0 0 0 0 0 0 0 0 0\n"
                                     "btime nonsense\n"
                                     "intr 1 2 3");
    ASSERT_EQ(s.cores.size(), 2u);
    EXPECT_EQ(s.cores[1].user, 5u);
    EXPECT_FALSE(s.bootTime);
    EXPECT_TRUE(parseProcStat("").cores.empty());
}

TEST(CpuUsage, LoadsFromDeltasIncludingCountersThatWrap) {
    const CPUUsage half = cpuUsage({100, 50, 1000, 0}, {150, 100, 1100, 0});
    EXPECT_DOUBLE_EQ(half.user, 0.25);
    EXPECT_DOUBLE_EQ(half.system, 0.25);
    EXPECT_DOUBLE_EQ(half.total(), 0.5);
    // Nice time counts as user time.
    EXPECT_DOUBLE_EQ(cpuUsage({0, 0, 0, 0}, {0, 0, 50, 50}).user, 0.5);
    // No ticks at all (a core that was offline) is no load, not a division by zero.
    EXPECT_DOUBLE_EQ(cpuUsage({5, 5, 5, 5}, {5, 5, 5, 5}).total(), 0.0);

    // The idle counter passes the top of its range between two samples.
    constexpr auto kTop = std::numeric_limits<std::uint64_t>::max();
    const CPUUsage wrapped = cpuUsage({100, 100, kTop - 49, 0}, {150, 100, 50, 0});
    EXPECT_DOUBLE_EQ(wrapped.user, 50.0 / 150.0);
    EXPECT_GE(wrapped.total(), 0.0);
    EXPECT_LE(wrapped.total(), 1.0);
}

TEST(CpuUsage, MachineLoadSumsTheCoresAndACoreCountChangeStartsAfresh) {
    const CPUSnapshot before{{0, 0, 0, 0}, {0, 0, 0, 0}};
    const CPUSnapshot now{{100, 0, 0, 0}, {0, 0, 300, 0}};
    const auto loads = cpuLoads(before, now);
    ASSERT_TRUE(loads);
    ASSERT_EQ(loads->perCore.size(), 2u);
    EXPECT_DOUBLE_EQ(loads->perCore[0].user, 1.0);
    EXPECT_DOUBLE_EQ(loads->perCore[1].user, 0.0);
    EXPECT_DOUBLE_EQ(loads->total.user, 0.25); // 100 busy of 400 ticks, not the mean of 1 and 0

    EXPECT_FALSE(cpuLoads({}, now));                           // the first sample
    EXPECT_FALSE(cpuLoads(before, CPUSnapshot{{1, 1, 1, 1}})); // a core went offline
}

TEST(CpuTopology, CountsCpuListsAndHybridCores) {
    EXPECT_EQ(countCpuList("0-3\n"), 4);
    EXPECT_EQ(countCpuList("0-3,8,10-11"), 7);
    EXPECT_EQ(countCpuList("0"), 1);
    EXPECT_FALSE(countCpuList(""));
    EXPECT_FALSE(countCpuList("3-1"));
    EXPECT_FALSE(countCpuList("0-2147483647")); // more CPUs than the kernel counts
    EXPECT_EQ(countCpuList("0-8191"), 8192);
    EXPECT_FALSE(countCpuList("a-b"));

    const auto node = readTopology(kFixtures / "linux/node-exporter", 0);
    EXPECT_FALSE(node.performance);
    EXPECT_EQ(node.summary(), QString("%1 cores").arg(node.logicalCores));

    // A hybrid Intel part (values as on a Core i7-1260P: 4 performance cores with two threads
    // each, 8 efficiency cores).
    test::FixtureTree hybrid;
    hybrid.write("sys/devices/system/cpu/present", "0-15\n");
    hybrid.write("sys/devices/cpu_core/cpus", "0-7\n");
    hybrid.write("sys/devices/cpu_atom/cpus", "8-15\n");
    const auto t = readTopology(hybrid.root(), 0);
    EXPECT_EQ(t.logicalCores, 16);
    EXPECT_EQ(t.performance, 8);
    EXPECT_EQ(t.efficiency, 8);
    EXPECT_EQ(t.summary(), "16 cores (8 performance, 8 efficiency)");

    test::FixtureTree bare; // nothing under /sys: the core count from /proc/stat stands
    EXPECT_EQ(readTopology(bare.root(), 1).summary(), "1 core");
}
