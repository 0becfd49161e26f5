#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarvik::platform {

// The /proc/meminfo fields Tarvik reads, in bytes. A field the kernel did not report stays empty.
struct MemInfo {
    std::optional<std::uint64_t> memTotal;
    std::optional<std::uint64_t> memFree;
    std::optional<std::uint64_t> memAvailable;
    std::optional<std::uint64_t> buffers;
    std::optional<std::uint64_t> cached;
    std::optional<std::uint64_t> swapTotal;
    std::optional<std::uint64_t> swapFree;
};

MemInfo parseMeminfo(std::string_view text);

} // namespace tarvik::platform
