#include "core/monitor/battery.h"
#include "core/monitor/thermal.h"
#include "tests/support/fixture_tree.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {
const std::filesystem::path kFixtures = TARVIK_FIXTURES;
const std::string kBat = "sys/class/power_supply/BAT0/";
} // namespace

TEST(Battery, ADischargingLaptopFromACapture) {
    // energy 36.58 of 45.07 Wh (design 47.52), drawing 5.002 W, adapter offline.
    const auto b = readBattery(kFixtures / "linux/node-exporter");
    ASSERT_TRUE(b);
    EXPECT_NEAR(b->charge, 36580000.0 / 45070000.0, 1e-9);
    EXPECT_FALSE(b->isCharging);
    EXPECT_EQ(b->source, PowerSource::Battery);
    EXPECT_EQ(b->minutesRemaining, 438); // 36.58 Wh / 5.002 W = 7 h 18 min
    ASSERT_TRUE(b->health);
    EXPECT_NEAR(*b->health, 45070000.0 / 47520000.0, 1e-9);
    EXPECT_FALSE(b->cycleCount); // the capture says 0: the firmware does not count
    EXPECT_EQ(b->statusText(), "On battery");

    // The procfs capture reaches its batteries through symbolic links into /sys/devices.
    EXPECT_TRUE(readBattery(kFixtures / "linux/procfs"));
    EXPECT_FALSE(readBattery(kFixtures / "linux/debian12-vm")); // a VM has none
}

TEST(Battery, ChargingInChargeUnitsPeripheralsAndTwoBatteries) {
    test::FixtureTree t;
    t.write("sys/class/power_supply/ADP1/type", "Mains\n");
    t.write("sys/class/power_supply/ADP1/online", "1\n");
    t.write(kBat + "type", "Battery\n");
    t.write(kBat + "status", "Charging\n");
    t.write(kBat + "charge_now", "2000000\n");
    t.write(kBat + "charge_full", "4000000\n");
    t.write(kBat + "charge_full_design", "5000000\n");
    t.write(kBat + "current_now", "-1000000\n"); // some firmware signs the current
    t.write(kBat + "cycle_count", "312\n");
    t.write(kBat + "temp", "312\n");
    // A wireless mouse's battery is not the machine's.
    t.write("sys/class/power_supply/hidpp_battery_0/type", "Battery\n");
    t.write("sys/class/power_supply/hidpp_battery_0/scope", "Device\n");
    t.write("sys/class/power_supply/hidpp_battery_0/capacity", "5\n");
    auto b = readBattery(t.root());
    ASSERT_TRUE(b);
    EXPECT_DOUBLE_EQ(b->charge, 0.5);
    EXPECT_TRUE(b->isCharging);
    EXPECT_EQ(b->source, PowerSource::AcPower);
    EXPECT_EQ(b->minutesRemaining, 120);
    EXPECT_DOUBLE_EQ(*b->health, 0.8);
    EXPECT_EQ(b->cycleCount, 312);
    EXPECT_DOUBLE_EQ(*b->temperature, 31.2);
    EXPECT_EQ(b->statusText(), "Charging");

    // A second battery adds its energy: 2 + 3 of 4 + 4 (charge units).
    t.write("sys/class/power_supply/BAT1/type", "Battery\n");
    t.write("sys/class/power_supply/BAT1/status", "Unknown\n");
    t.write("sys/class/power_supply/BAT1/charge_now", "3000000\n");
    t.write("sys/class/power_supply/BAT1/charge_full", "4000000\n");
    t.write("sys/class/power_supply/BAT1/charge_full_design", "4000000\n");
    b = readBattery(t.root());
    ASSERT_TRUE(b);
    EXPECT_DOUBLE_EQ(b->charge, 5.0 / 8.0);
    EXPECT_DOUBLE_EQ(*b->health, 8.0 / 9.0);

    // Full on the adapter; a still-estimating (0) time gives no figure; capacity alone works.
    test::FixtureTree full;
    full.write(kBat + "type", "Battery\n");
    full.write(kBat + "status", "Full\n");
    full.write(kBat + "capacity", "100\n");
    full.write(kBat + "time_to_empty_now", "0\n");
    b = readBattery(full.root());
    ASSERT_TRUE(b);
    EXPECT_EQ(b->source, PowerSource::AcPower);
    EXPECT_EQ(b->statusText(), "Charged");
    EXPECT_FALSE(b->minutesRemaining);
    EXPECT_FALSE(b->health);

    full.write(kBat + "capacity", "not a number\n");
    EXPECT_FALSE(readBattery(full.root())); // nothing readable: no battery, no made-up figure
}

TEST(Battery, StatusTextRules) {
    BatteryInfo b;
    b.source = PowerSource::AcPower;
    b.charge = 0.99;
    EXPECT_EQ(b.statusText(), "Charged");
    b.charge = 0.98;
    EXPECT_EQ(b.statusText(), "On power adapter");
    b.isCharging = true;
    EXPECT_EQ(b.statusText(), "Charging");
    b = {};
    b.charge = 1.0;
    EXPECT_EQ(b.statusText(), "On battery");

    // The status line adds the time, when the kernel gives one.
    EXPECT_EQ(b.statusLine(), "On battery");
    b.minutesRemaining = 95;
    EXPECT_EQ(b.statusLine(), "On battery · 1 hour, 35 minutes left");
    b.isCharging = true;
    EXPECT_EQ(b.statusLine(), "Charging · 1 hour, 35 minutes to full");
}

TEST(Thermal, ZonesAgainstTheirOwnTripPointsTheHottestDecides) {
    test::FixtureTree t;
    auto zone = [&t](int n, const char* temp, const char* passive, const char* critical) {
        const std::string dir = "sys/class/thermal/thermal_zone" + std::to_string(n) + "/";
        t.write(dir + "temp", temp);
        int i = 0;
        if (passive) {
            t.write(dir + "trip_point_" + std::to_string(i) + "_type", "passive\n");
            t.write(dir + "trip_point_" + std::to_string(i++) + "_temp", passive);
        }
        if (critical) {
            t.write(dir + "trip_point_" + std::to_string(i) + "_type", "critical\n");
            t.write(dir + "trip_point_" + std::to_string(i) + "_temp", critical);
        }
    };
    EXPECT_FALSE(readThermalLevel(t.root()));
    zone(0, "45000\n", "90000\n", "105000\n");
    EXPECT_EQ(readThermalLevel(t.root()), ThermalLevel::Nominal);
    zone(1, "82000\n", "90000\n", "105000\n");
    EXPECT_EQ(readThermalLevel(t.root()), ThermalLevel::Fair);
    zone(2, "91000\n", "90000\n", nullptr);
    EXPECT_EQ(readThermalLevel(t.root()), ThermalLevel::Serious);
    zone(3, "-44000\n", "90000\n", "105000\n"); // a disabled sensor
    zone(4, "garbage\n", "1\n", "2\n");
    EXPECT_EQ(readThermalLevel(t.root()), ThermalLevel::Serious);
    zone(5, "106000\n", nullptr, "105000\n");
    EXPECT_EQ(readThermalLevel(t.root()), ThermalLevel::Critical);

    // Captured zones have no trip points: no level rather than a guess.
    EXPECT_FALSE(readThermalLevel(kFixtures / "linux/procfs"));
}
