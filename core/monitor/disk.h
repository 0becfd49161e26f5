#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace tarvik {

// Bytes read and written since boot, summed over the machine's whole disks.
struct DiskIOCounters {
    std::uint64_t read = 0;
    std::uint64_t written = 0;
};

// Loop, RAM, zram, device-mapper and software-RAID devices only pass on I/O that a real disk
// also counts; optical drives and floppies are not storage the user manages.
bool isCountedDiskName(std::string_view name);

// Sums sectors × 512 from /proc/diskstats over the names `isWholeDisk` accepts.
DiskIOCounters parseDiskstats(std::string_view text,
                              const std::function<bool(std::string_view)>& isWholeDisk);

// Whole disks are the devices listed in /sys/block (partitions are not); when /sys is not
// there, a partition is told by its name (sda1, nvme0n1p2, mmcblk0p1).
std::optional<DiskIOCounters> readDiskCounters(const std::filesystem::path& root);
bool looksLikePartition(std::string_view name);

// Counters only grow; one that went back (a drive removed) gives 0, not a huge number.
DiskIOCounters diskDelta(const DiskIOCounters& before, const DiskIOCounters& now);

// A file system's size and free space.
struct DiskUsage {
    std::int64_t total = 0;
    std::int64_t free = 0; // what an ordinary user may still write
};
// The file system holding `path` (statvfs); empty when it can't be read.
std::optional<DiskUsage> readDiskUsage(const std::filesystem::path& path);

} // namespace tarvik
