#pragma once

#include <QString>
#include <atomic>
#include <cstdint>
#include <string>

namespace tarvik {

struct SizeResult {
    std::int64_t allocated = 0;  // each file (device + inode) once
    std::int64_t releasable = 0; // files whose every name lies inside: what removing frees
    std::int64_t files = 0;
    std::int64_t unreadable = 0;       // folders that could not be listed
    std::int64_t otherFileSystems = 0; // mount points below that were not entered
};

// Allocated size (st_blocks × 512) of a file or folder tree: regular files only, symbolic
// links never followed and counting 0, hidden files included, unreadable folders skipped, other
// file systems below the start not entered (like du -x), hard links counted once. Large trees
// are walked by several threads through directory handles (getdents64 + statx).
class DirectorySizer {
public:
    explicit DirectorySizer(const std::atomic<bool>* cancel = nullptr, int threads = 0)
        : cancel_(cancel), threads_(threads) {}

    std::int64_t size(const QString& path) const { return measure(path).allocated; }
    SizeResult measure(const QString& path) const;
    SizeResult measure(const std::string& path) const;

private:
    const std::atomic<bool>* cancel_;
    int threads_;
};

} // namespace tarvik
