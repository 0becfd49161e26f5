#include "core/monitor/disk.h"
#include "core/monitor/network.h"
#include "core/sys/system_files.h"
#include "tests/support/fixture_tree.h"

#include <gtest/gtest.h>
#include <limits>

using namespace tarvik;

namespace {
const std::filesystem::path kFixtures = TARVIK_FIXTURES;
constexpr auto kTop = std::numeric_limits<std::uint64_t>::max();
} // namespace

TEST(NetworkCounters, OnlyPhysicalInterfacesThatAreUpCount) {
    for (const char* skipped :
         {"lo", "utun3", "awdl0", "llw0", "bridge0", "ap1", "p2p0", "docker0", "veth1a2b3c",
          "br-5f2e", "virbr0", "vnet3", "tun0", "tap1", "wg0", "tailscale0"}) {
        EXPECT_FALSE(isCountedInterfaceName(skipped)) << skipped;
    }
    for (const char* counted : {"en0", "eth0", "wlp2s0", "enp0s31f6", "wwan0", "usb0"}) {
        EXPECT_TRUE(isCountedInterfaceName(counted)) << counted;
    }

    const NetworkCounters all =
        parseProcNetDev(*platform::readSmallFile(kFixtures, "linux/procfs/proc/net/dev"));
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all.at("eth0").received, 874354587u);
    EXPECT_EQ(all.at("eth0").sent, 563352563u);

    // This machine: eth0 is up; lo is loopback; ifb0 and ifb1 are down.
    const auto vm = readNetworkCounters(kFixtures / "linux/debian12-vm");
    ASSERT_TRUE(vm);
    ASSERT_EQ(vm->size(), 1u);
    EXPECT_EQ(vm->begin()->first, "eth0");

    // Without /sys the names alone decide: the capture's docker0, veth and lo are left out.
    test::FixtureTree bare;
    bare.write("proc/net/dev", *platform::readSmallFile(kFixtures, "linux/procfs/proc/net/dev"));
    const auto named = readNetworkCounters(bare.root());
    ASSERT_TRUE(named);
    EXPECT_EQ(named->size(), 1u);
    EXPECT_TRUE(named->contains("eth0"));
    EXPECT_FALSE(readNetworkCounters(test::FixtureTree().root()));

    EXPECT_TRUE(parseProcNetDev("Inter-|\n face |\n eth0: 1 2 3\n wlan0: x\n").empty());
}

TEST(NetworkCounters, WrapsResetsAndInterfacesThatComeAndGo) {
    EXPECT_EQ(counterDelta(100, 250), 150u);
    EXPECT_EQ(counterDelta(kTop - 99, 50), 150u);      // passed the top of 64 bits
    EXPECT_EQ(counterDelta(5'000'000'000, 1'000), 0u); // re-created interface: no spike

    const NetworkCounters before{{"eth0", {1000, 500}}, {"wlan0", {kTop - 9, 10}}};
    const NetworkCounters now{{"eth0", {1600, 700}}, {"wlan0", {20, 10}}, {"usb0", {9999, 9999}}};
    const ByteDelta d = networkDelta(before, now);
    EXPECT_EQ(d.first, 600u + 30u); // usb0 just appeared and adds nothing yet
    EXPECT_EQ(d.second, 200u);
    EXPECT_EQ(networkDelta(now, NetworkCounters{}).first, 0u); // all gone
}

TEST(DiskCounters, WholeDisksOnlyFromSysBlockOrFromTheirNames) {
    // This machine: vda is the disk; loop devices and zram are not.
    const auto vm = readDiskCounters(kFixtures / "linux/debian12-vm");
    ASSERT_TRUE(vm);
    EXPECT_EQ(vm->read, 5739618ull * 512);
    EXPECT_EQ(vm->written, 15331528ull * 512);

    // The procfs capture lists sda, sdb and sdc in /sys/block; partitions and dm- are out.
    const auto procfs = readDiskCounters(kFixtures / "linux/procfs");
    ASSERT_TRUE(procfs);
    EXPECT_EQ(procfs->read, (1003346126ull + 9657779ull + 579164ull) * 512);
    EXPECT_EQ(procfs->written, (505697032ull + 1972905ull + 180500ull) * 512);

    // Without /sys: sda, sdb, sdc, mmcblk0, nvme0n1 and vda by name; their partitions, ram,
    // loop, dm-, sr0 and fd0 are out.
    test::FixtureTree bare;
    bare.write("proc/diskstats",
               *platform::readSmallFile(kFixtures, "linux/node-exporter/proc/diskstats"));
    const auto named = readDiskCounters(bare.root());
    ASSERT_TRUE(named);
    EXPECT_EQ(named->read,
              (1003346126ull + 9657779ull + 1657779ull + 1560ull + 4643973ull + 32670882ull) * 512);
    EXPECT_EQ(named->written,
              (505697032ull + 1972905ull + 172905ull + 39451633ull + 213637440ull) * 512);

    EXPECT_TRUE(looksLikePartition("nvme0n1p2"));
    EXPECT_FALSE(looksLikePartition("nvme0n1"));
    EXPECT_TRUE(looksLikePartition("mmcblk0p1"));
    EXPECT_FALSE(looksLikePartition("mmcblk0"));
    EXPECT_TRUE(looksLikePartition("sdb12"));
    EXPECT_FALSE(looksLikePartition("sdb"));

    EXPECT_FALSE(readDiskCounters(test::FixtureTree().root()));
    const auto damaged =
        parseDiskstats("8 0 sda 1 2 x 4 5 6 7\n8 0 sdb 1\n", [](std::string_view) { return true; });
    EXPECT_EQ(damaged.read, 0u);
}

TEST(DiskCounters, ACounterThatWentBackGivesZero) {
    EXPECT_EQ(diskDelta({1000, 2000}, {1500, 2600}).read, 500u);
    EXPECT_EQ(diskDelta({1000, 2000}, {1500, 2600}).written, 600u);
    const DiskIOCounters removed = diskDelta({1'000'000, 2'000'000}, {10, 2'000'100});
    EXPECT_EQ(removed.read, 0u);
    EXPECT_EQ(removed.written, 100u);
}
