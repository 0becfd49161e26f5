#pragma once

#include <QString>
#include <filesystem>
#include <optional>

namespace tarvik {

// "Ethernet", "Wi-Fi", "Cellular" or "Other" for the interface that carries the default route
// (/proc/net/route), judged from /sys/class/net; none when the machine has no default route.
std::optional<QString> connectionLabel(const std::filesystem::path& root = "/");

} // namespace tarvik
