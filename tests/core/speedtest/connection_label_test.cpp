#include "core/sys/connection_label.h"
#include "tests/support/fixture_tree.h"

#include <gtest/gtest.h>

using namespace tarvik;

TEST(ConnectionLabel, NetworkManagersTypesAndTheMeteredHotspot) {
    EXPECT_EQ(connectionFromNetworkManager("802-3-ethernet", 2).label, "Ethernet");
    EXPECT_EQ(connectionFromNetworkManager("802-11-wireless", 4).label, "Wi-Fi");
    const auto hotspot = connectionFromNetworkManager("802-11-wireless", 3);
    EXPECT_EQ(hotspot.label, "Wi-Fi (Personal Hotspot)");
    EXPECT_TRUE(hotspot.metered);
    EXPECT_EQ(connectionFromNetworkManager("gsm", 1).label, "Cellular"); // cellular stays cellular
    EXPECT_EQ(connectionFromNetworkManager("vpn", 0).label, "Other");
    EXPECT_FALSE(connectionFromNetworkManager("", 1).label);
}

TEST(ConnectionLabel, TheDefaultRoutesInterfaceInSys) {
    // This machine: eth0 carries the default route; its sysfs entry here has no device link.
    EXPECT_EQ(connectionLabelFromSys(std::filesystem::path(TARVIK_FIXTURES) / "linux/debian12-vm"),
              std::nullopt); // the capture has no /proc/net/route
    test::FixtureTree t;
    const std::string routes = "Iface\tDestination\tGateway\tFlags\n"
                               "wlp2s0\t0001A8C0\t00000000\t0001\n"
                               "wlp2s0\t00000000\t0101A8C0\t0003\n";
    t.write("proc/net/route", routes);
    t.write("sys/class/net/wlp2s0/wireless/.keep", "");
    EXPECT_EQ(connectionLabelFromSys(t.root()), "Wi-Fi");
    t.write("proc/net/route",
            "Iface\tDestination\tGateway\tFlags\nenp3s0\t00000000\t0101A8C0\t0003\n");
    t.write("sys/class/net/enp3s0/type", "1\n");
    t.write("sys/class/net/enp3s0/device/.keep", "");
    EXPECT_EQ(connectionLabelFromSys(t.root()), "Ethernet");
    t.write("proc/net/route",
            "Iface\tDestination\tGateway\tFlags\nwg0\t00000000\t00000000\t0001\n");
    EXPECT_EQ(connectionLabelFromSys(t.root()), "Other");
    t.write("proc/net/route",
            "Iface\tDestination\tGateway\tFlags\neth0\t00000000\t0101A8C0\t0002\n");
    EXPECT_FALSE(connectionLabelFromSys(t.root())); // the route is down
}
