#include "core/monitor/gpu/gpu_source.h"
#include "tests/support/fixture_tree.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {
const std::filesystem::path kFixtures = TARVIK_FIXTURES;
const std::string kCard = "sys/class/drm/card0/device/";
} // namespace

TEST(Gpu, AmdBusyPercentAndASleepingCardLeftAlone) {
    const auto amd = makeAmdGpuSource(kFixtures / "linux/procfs"); // gpu_busy_percent = 4
    ASSERT_TRUE(amd);
    EXPECT_DOUBLE_EQ(*amd->read(0).load, 0.04);

    test::FixtureTree t;
    t.write(kCard + "gpu_busy_percent", "100\n");
    t.write(kCard + "power/runtime_status", "suspended\n");
    t.write("sys/class/drm/card0-eDP-1/status", "connected\n"); // a connector, not a card
    auto source = makeAmdGpuSource(t.root());
    ASSERT_TRUE(source);
    // Asleep: the busy figure is not read (that would wake the card), so no 100 % appears.
    GpuReading r = source->read(0);
    EXPECT_TRUE(r.asleep);
    EXPECT_FALSE(r.load);
    t.write(kCard + "power/runtime_status", "active\n");
    t.write(kCard + "gpu_busy_percent", "250\n"); // out of range is clamped
    r = source->read(0);
    EXPECT_FALSE(r.asleep);
    EXPECT_DOUBLE_EQ(*r.load, 1.0);
    t.write(kCard + "gpu_busy_percent", "busy\n");
    EXPECT_FALSE(source->read(0).load);

    EXPECT_FALSE(makeAmdGpuSource(kFixtures / "linux/debian12-vm"));
}

TEST(Gpu, IntelLoadFromTimeSpentInRc6) {
    test::FixtureTree t;
    const std::string rc6 = "sys/class/drm/card1/gt/gt0/rc6_residency_ms";
    t.write(rc6, "1000\n");
    auto source = makeIntelGpuSource(t.root());
    ASSERT_TRUE(source);
    EXPECT_FALSE(source->read(0).load); // the first reading only sets the baseline
    t.write(rc6, "1750\n");             // asleep 750 ms of the next second: 25 % busy
    EXPECT_DOUBLE_EQ(*source->read(1'000'000'000).load, 0.25);
    t.write(rc6, "100\n"); // counter reset (driver reloaded): no figure, not a negative one
    EXPECT_FALSE(source->read(2'000'000'000).load);
}

TEST(Gpu, NvidiaIsNeverWokenAndNeverNeededAtBuildTime) {
    test::FixtureTree t;
    const std::string pci = "sys/bus/pci/devices/0000:01:00.0/";
    EXPECT_FALSE(makeNvidiaGpuSource(t.root())); // no NVIDIA card: NVML is never loaded
    t.write(pci + "vendor", "0x10de\n");
    t.write(pci + "class", "0x030200\n");
    t.write(pci + "power/runtime_status", "suspended\n");
    auto source = makeNvidiaGpuSource(t.root());
    ASSERT_TRUE(source);
    GpuReading r = source->read(0);
    EXPECT_TRUE(r.asleep);
    EXPECT_FALSE(r.load);
    // Awake but without the driver's library (as here): no figure, no failure.
    t.write(pci + "power/runtime_status", "active\n");
    r = source->read(0);
    EXPECT_FALSE(r.asleep);
    EXPECT_FALSE(r.load);
}

namespace {
struct Fixed final : GpuSource {
    GpuReading value;
    explicit Fixed(GpuReading v) : value(v) {}
    GpuReading read(std::int64_t) override { return value; }
};
} // namespace

TEST(Gpu, TheBusiestGpuWinsAndNoneReportingIsNoFigure) {
    std::vector<std::unique_ptr<GpuSource>> sources;
    sources.push_back(std::make_unique<Fixed>(GpuReading{0.2, false}));
    sources.push_back(std::make_unique<Fixed>(GpuReading{std::nullopt, true}));
    sources.push_back(std::make_unique<Fixed>(GpuReading{0.7, false}));
    GpuMonitor monitor(std::move(sources));
    const GpuReading r = monitor.read(0);
    EXPECT_DOUBLE_EQ(*r.load, 0.7);
    EXPECT_FALSE(r.asleep); // a working GPU's figure is what is shown

    std::vector<std::unique_ptr<GpuSource>> sleeping;
    sleeping.push_back(std::make_unique<Fixed>(GpuReading{std::nullopt, true}));
    EXPECT_TRUE(GpuMonitor(std::move(sleeping)).read(0).asleep);
    EXPECT_FALSE(GpuMonitor(std::vector<std::unique_ptr<GpuSource>>{}).read(0).load);
}
