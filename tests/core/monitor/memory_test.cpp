#include "core/monitor/memory.h"
#include "core/sys/system_files.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {
const std::filesystem::path kFixtures = TARVIK_FIXTURES;

// A machine of 1000 bytes where a = (free + cached) / total and c = compressed / total.
MemoryStats shaped(double a, double c) {
    MemoryStats m;
    m.total = 1000;
    m.free = static_cast<std::int64_t>(a * 1000);
    m.compressed = static_cast<std::int64_t>(c * 1000);
    return m;
}
} // namespace

TEST(MemoryStats, EstimatedPressureBounds) {
    EXPECT_EQ(shaped(0.04, 0.26).estimatedPressure(), MemoryPressure::Critical);
    EXPECT_EQ(shaped(0.04, 0.20).estimatedPressure(), MemoryPressure::Warning);
    EXPECT_EQ(shaped(0.20, 0.31).estimatedPressure(), MemoryPressure::Warning);
    EXPECT_EQ(shaped(0.20, 0.30).estimatedPressure(), MemoryPressure::Normal); // c must exceed 0.3
    EXPECT_EQ(shaped(0.10, 0.00).estimatedPressure(),
              MemoryPressure::Normal); // a must be below 0.1
    EXPECT_EQ(shaped(0.09, 0.00).estimatedPressure(), MemoryPressure::Warning);
    EXPECT_EQ(MemoryStats{}.estimatedPressure(), MemoryPressure::Normal); // total 0

    MemoryStats reported = shaped(0.04, 0.26);
    reported.reportedPressure = MemoryPressure::Normal;
    EXPECT_EQ(reported.pressure(), MemoryPressure::Normal); // the kernel's word wins
}

TEST(MemoryStats, DerivedValuesNeverGoNegativeOrPastTheTotal) {
    MemoryStats m;
    m.total = 100;
    m.anonymous = 30;
    m.purgeable = 40;
    m.fileBacked = 10;
    m.wired = 20;
    EXPECT_EQ(m.appMemory(), 0);
    EXPECT_EQ(m.cachedFiles(), 50);
    EXPECT_EQ(m.used(), 20);
    m.anonymous = 500;
    EXPECT_EQ(m.used(), 100);
    EXPECT_EQ(m.available(), 0);
    EXPECT_DOUBLE_EQ(m.usedFraction(), 1.0);
    EXPECT_DOUBLE_EQ(MemoryStats{}.usedFraction(), 0.0);
}

TEST(MemoryStats, MeminfoMapsSoUsedAgreesWithTheKernelsAvailableMemory) {
    const auto text = platform::readSmallFile(kFixtures, "linux/debian12-vm/proc/meminfo");
    ASSERT_TRUE(text);
    const auto info = platform::parseMeminfo(*text);
    const auto m = memoryFromMeminfo(info, 0);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->total, 24683656ll * 1024);
    EXPECT_EQ(m->used(), m->total - static_cast<std::int64_t>(*info.memAvailable));
    EXPECT_EQ(m->anonymous, static_cast<std::int64_t>(*info.anonPages + *info.shmem));
    EXPECT_EQ(m->swapTotal, 0);

    // An older kernel without MemAvailable: itemised kernel memory only.
    const auto old = platform::parseMeminfo(
        *platform::readSmallFile(kFixtures, "linux/node-exporter/proc/meminfo"));
    const auto n = memoryFromMeminfo(old, 4096);
    ASSERT_TRUE(n);
    EXPECT_EQ(n->swapUsed, (4194300ll - 3155360ll) * 1024);
    EXPECT_EQ(n->compressed, 4096 + static_cast<std::int64_t>(old.zswap.value_or(0)));
    EXPECT_GT(n->wired, 0);
    EXPECT_LE(n->used(), n->total);

    EXPECT_FALSE(memoryFromMeminfo(platform::parseMeminfo(""), 0));
    EXPECT_FALSE(memoryFromMeminfo(platform::parseMeminfo("MemTotal: abc kB\n"), 0));
}

TEST(MemoryPressure, KernelPressureFromPsiWithItsThresholds) {
    auto psi = [](double some, double full) {
        return "some avg10=" + std::to_string(some) + " avg60=0.00 avg300=0.00 total=1\n" +
               "full avg10=" + std::to_string(full) + " avg60=0.00 avg300=0.00 total=1\n";
    };
    EXPECT_EQ(parseMemoryPressure(psi(0.1, 0.2)), MemoryPressure::Normal);
    EXPECT_EQ(parseMemoryPressure(psi(9.9, 0.9)), MemoryPressure::Normal);
    EXPECT_EQ(parseMemoryPressure(psi(10.0, 0.0)), MemoryPressure::Warning);
    EXPECT_EQ(parseMemoryPressure(psi(2.0, 1.0)), MemoryPressure::Warning);
    EXPECT_EQ(parseMemoryPressure(psi(30.0, 5.0)), MemoryPressure::Critical);
    const auto captured = platform::readSmallFile(kFixtures, "linux/procfs/proc/pressure/memory");
    EXPECT_EQ(parseMemoryPressure(*captured), MemoryPressure::Normal);
    EXPECT_FALSE(parseMemoryPressure(""));
    EXPECT_FALSE(parseMemoryPressure("some avg10=high\n"));
    EXPECT_EQ(parseMemoryPressure("some avg10=12.5 avg60=1 avg300=1 total=1"),
              MemoryPressure::Warning); // no "full" line on older kernels
}
