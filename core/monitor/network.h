#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik {

// Linux keeps 64-bit byte counters per interface.
struct InterfaceCounters {
    std::uint64_t received = 0;
    std::uint64_t sent = 0;
};
using NetworkCounters = std::map<std::string, InterfaceCounters, std::less<>>;

// Every interface line of /proc/net/dev; damaged lines are skipped.
NetworkCounters parseProcNetDev(std::string_view text);

// Loopback, tunnels, bridges, container and VM links carry traffic that a physical interface
// already counted (or never leaves the machine), so their names are not counted.
bool isCountedInterfaceName(std::string_view name);

// The counted interfaces of a machine: by name, and up and not loopback by their sysfs flags
// when /sys/class/net tells.
std::optional<NetworkCounters> readNetworkCounters(const std::filesystem::path& root);

struct ByteDelta {
    std::uint64_t first = 0;  // received / read
    std::uint64_t second = 0; // sent / written
};

// A 64-bit counter's difference. Counting past 2^64 wraps (the difference is taken modulo
// 2^64); a counter that went back from far below that was reset (a driver reloaded, an
// interface re-created) and gives 0 rather than a spike.
std::uint64_t counterDelta(std::uint64_t before, std::uint64_t now);

// Bytes moved by interfaces present both times; interfaces that appeared or went away since
// the last sample contribute nothing this time.
ByteDelta networkDelta(const NetworkCounters& before, const NetworkCounters& now);

} // namespace tarvik
