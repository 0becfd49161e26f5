#include "core/monitor/network.h"

#include "core/sys/system_files.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <system_error>

namespace tarvik {
namespace {

bool parseU64(std::string_view& s, std::uint64_t& out) {
    const auto begin = s.find_first_not_of(' ');
    if (begin == std::string_view::npos) {
        return false;
    }
    s.remove_prefix(begin);
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
    if (ec != std::errc{}) {
        return false;
    }
    s.remove_prefix(static_cast<std::size_t>(end - s.data()));
    return true;
}

constexpr unsigned kIffUp = 0x1;
constexpr unsigned kIffLoopback = 0x8;

} // namespace

NetworkCounters parseProcNetDev(std::string_view text) {
    NetworkCounters out;
    while (!text.empty()) {
        const auto eol = text.find('\n');
        std::string_view line = text.substr(0, eol);
        text = eol == std::string_view::npos ? std::string_view{} : text.substr(eol + 1);
        const auto colon = line.find(':');
        if (colon == std::string_view::npos || line.find('|') != std::string_view::npos) {
            continue; // the two heading lines
        }
        std::string_view name = line.substr(0, colon);
        name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
        std::string_view rest = line.substr(colon + 1);
        // received: bytes packets errs drop fifo frame compressed multicast, then sent: bytes …
        std::array<std::uint64_t, 9> f{};
        bool ok = !name.empty();
        for (std::size_t i = 0; ok && i < f.size(); ++i) {
            ok = parseU64(rest, f[i]);
        }
        if (ok) {
            out[std::string(name)] = {f[0], f[8]};
        }
    }
    return out;
}

bool isCountedInterfaceName(std::string_view name) {
    static constexpr std::array<std::string_view, 12> kAppleLike{
        "lo", "utun", "ipsec", "gif", "stf", "awdl", "llw", "bridge", "anpi", "ap", "p2p", "vmnet"};
    static constexpr std::array<std::string_view, 16> kLinuxVirtual{
        "docker",    "veth", "br-", "virbr",   "vnet", "tun",   "tap",    "wg",
        "tailscale", "zt",   "cni", "flannel", "cali", "vxlan", "podman", "lxc"};
    for (auto prefix : kAppleLike) {
        if (name.starts_with(prefix)) {
            return false;
        }
    }
    for (auto prefix : kLinuxVirtual) {
        if (name.starts_with(prefix)) {
            return false;
        }
    }
    return !name.empty();
}

std::optional<NetworkCounters> readNetworkCounters(const std::filesystem::path& root) {
    const auto text = platform::readSmallFile(root, "proc/net/dev");
    if (!text) {
        return std::nullopt;
    }
    NetworkCounters all = parseProcNetDev(*text);
    NetworkCounters counted;
    for (auto& [name, counters] : all) {
        if (!isCountedInterfaceName(name)) {
            continue;
        }
        // flags is hex ("0x1003"); without sysfs the name rules alone decide.
        if (const auto flags = platform::readAttribute(root, "sys/class/net/" + name + "/flags")) {
            unsigned value = 0;
            const auto* begin = flags->data() + (flags->starts_with("0x") ? 2 : 0);
            if (std::from_chars(begin, flags->data() + flags->size(), value, 16).ec ==
                    std::errc{} &&
                ((value & kIffUp) == 0 || (value & kIffLoopback) != 0)) {
                continue;
            }
        }
        counted.emplace(name, counters);
    }
    return counted;
}

std::uint64_t counterDelta(std::uint64_t before, std::uint64_t now) {
    if (now >= before) {
        return now - before;
    }
    constexpr std::uint64_t kNearTheTop = std::uint64_t{1} << 63;
    return before >= kNearTheTop ? now - before : 0; // unsigned: modulo 2^64
}

ByteDelta networkDelta(const NetworkCounters& before, const NetworkCounters& now) {
    ByteDelta d;
    for (const auto& [name, counters] : now) {
        const auto it = before.find(name);
        if (it == before.end()) {
            continue;
        }
        d.first += counterDelta(it->second.received, counters.received);
        d.second += counterDelta(it->second.sent, counters.sent);
    }
    return d;
}

} // namespace tarvik
