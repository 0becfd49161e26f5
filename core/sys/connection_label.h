#pragma once

#include <QString>
#include <filesystem>
#include <optional>

namespace tarvik {

// "Ethernet", "Wi-Fi", "Cellular" or "Other" for the interface that carries the default route
// (/proc/net/route), judged from /sys/class/net; none when the machine has no default route.
std::optional<QString> connectionLabelFromSys(const std::filesystem::path& root = "/");

struct NetworkConnection {
    std::optional<QString> label; // "Wi-Fi (Personal Hotspot)" on a metered Wi-Fi
    bool metered = false;
};
// NetworkManager's primary connection type and metered flag mapped to a label: wired, Wi-Fi,
// cellular or other; metered and not cellular adds " (Personal Hotspot)".
NetworkConnection connectionFromNetworkManager(const QString& primaryType, unsigned metered);
// NetworkManager over the system bus, else the interface of the default route in /sys.
NetworkConnection currentConnection();

} // namespace tarvik
