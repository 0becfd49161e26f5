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
    std::optional<std::uint64_t> active;
    std::optional<std::uint64_t> inactive;
    std::optional<std::uint64_t> anonPages;
    std::optional<std::uint64_t> shmem;
    std::optional<std::uint64_t> sReclaimable;
    std::optional<std::uint64_t> sUnreclaim;
    std::optional<std::uint64_t> kernelStack;
    std::optional<std::uint64_t> pageTables;
    std::optional<std::uint64_t> percpu;
    std::optional<std::uint64_t> zswap; // compressed size of the zswap pool (kernel 6.x)
};

MemInfo parseMeminfo(std::string_view text);

} // namespace tarvik::platform
