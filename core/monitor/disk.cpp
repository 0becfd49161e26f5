#include "core/monitor/disk.h"

#include "core/sys/file_calls.h"
#include "core/sys/system_files.h"

#include <array>
#include <cctype>
#include <charconv>
#include <sys/statvfs.h>
#include <system_error>

namespace tarvik {

bool isCountedDiskName(std::string_view name) {
    for (std::string_view prefix : {"loop", "ram", "zram", "dm-", "md", "sr", "fd", "nbd"}) {
        if (name.starts_with(prefix)) {
            return false;
        }
    }
    return !name.empty();
}

DiskIOCounters parseDiskstats(std::string_view text,
                              const std::function<bool(std::string_view)>& isWholeDisk) {
    DiskIOCounters total;
    while (!text.empty()) {
        const auto eol = text.find('\n');
        std::string_view line = text.substr(0, eol);
        text = eol == std::string_view::npos ? std::string_view{} : text.substr(eol + 1);
        // major minor name reads merged sectors_read ms writes merged sectors_written …
        std::array<std::string_view, 10> f{};
        std::size_t n = 0;
        while (n < f.size()) {
            const auto begin = line.find_first_not_of(' ');
            if (begin == std::string_view::npos) {
                break;
            }
            line.remove_prefix(begin);
            const auto end = line.find(' ');
            f[n++] = line.substr(0, end);
            line = end == std::string_view::npos ? std::string_view{} : line.substr(end);
        }
        if (n < f.size() || !isCountedDiskName(f[2]) || !isWholeDisk(f[2])) {
            continue;
        }
        std::uint64_t read = 0;
        std::uint64_t written = 0;
        if (std::from_chars(f[5].data(), f[5].data() + f[5].size(), read).ec != std::errc{} ||
            std::from_chars(f[9].data(), f[9].data() + f[9].size(), written).ec != std::errc{}) {
            continue;
        }
        // /proc/diskstats counts 512-byte sectors whatever the disk's own sector size.
        total.read += read * 512;
        total.written += written * 512;
    }
    return total;
}

bool looksLikePartition(std::string_view name) {
    if (name.empty() || !std::isdigit(static_cast<unsigned char>(name.back()))) {
        return false;
    }
    // nvme0n1p2, mmcblk0p1: "p" and a number after a name that itself ends in a digit.
    const auto p = name.rfind('p');
    if ((name.starts_with("nvme") || name.starts_with("mmcblk")) && p != std::string_view::npos &&
        p > 0 && std::isdigit(static_cast<unsigned char>(name[p - 1]))) {
        return true;
    }
    // sda1, vdb2, xvda3: letters then a number.
    if (name.starts_with("sd") || name.starts_with("vd") || name.starts_with("xvd") ||
        name.starts_with("hd")) {
        return true;
    }
    return false;
}

std::optional<DiskIOCounters> readDiskCounters(const std::filesystem::path& root) {
    const auto text = platform::readSmallFile(root, "proc/diskstats");
    if (!text) {
        return std::nullopt;
    }
    std::error_code ec;
    const auto sysBlock = root / "sys/block";
    if (std::filesystem::is_directory(sysBlock, ec)) {
        return parseDiskstats(*text, [&sysBlock](std::string_view name) {
            std::error_code e;
            return std::filesystem::exists(sysBlock / name, e);
        });
    }
    return parseDiskstats(*text, [](std::string_view name) { return !looksLikePartition(name); });
}

DiskIOCounters diskDelta(const DiskIOCounters& before, const DiskIOCounters& now) {
    return {now.read >= before.read ? now.read - before.read : 0,
            now.written >= before.written ? now.written - before.written : 0};
}

std::optional<DiskUsage> readDiskUsage(const std::filesystem::path& path) {
    struct statvfs s {};
    if (sys::statvfs(path.c_str(), &s) != 0) {
        return std::nullopt;
    }
    return DiskUsage{static_cast<std::int64_t>(s.f_blocks * s.f_frsize),
                     static_cast<std::int64_t>(s.f_bavail * s.f_frsize)};
}

} // namespace tarvik
