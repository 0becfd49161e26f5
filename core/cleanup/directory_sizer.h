#pragma once

#include <QString>
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace tarvik {

struct SizeResult {
    std::int64_t allocated = 0;  // each file (device + inode) once
    std::int64_t releasable = 0; // files whose every name lies inside: what removing frees
    std::int64_t files = 0;
    std::int64_t unreadable = 0;       // folders that could not be listed
    std::int64_t otherFileSystems = 0; // mount points below that were not entered
    std::int64_t skipped = 0;          // folders left out on purpose (the user's exclusions)
};

// Allocated size (st_blocks × 512) of a file or folder tree: regular files only, symbolic
// links never followed and counting 0, hidden files included, unreadable folders skipped, other
// mounts below the start not entered (like du -x), hard links counted once. Large trees are
// walked by several threads through directory handles (getdents64 + statx).
class DirectorySizer {
public:
    explicit DirectorySizer(const std::atomic<bool>* cancel = nullptr, int threads = 0)
        : cancel_(cancel), threads_(threads) {}
    // Folders (absolute paths as the file system spells them) whose contents are not counted.
    void skip(std::vector<std::string> folders) { skipped_ = std::move(folders); }

    std::int64_t size(const QString& path) const { return measure(path).allocated; }
    SizeResult measure(const QString& path) const;
    SizeResult measure(const std::string& path) const;
    // `name` in the open folder `dirFd` (whose path is `dirPath`), reached without following
    // a link; a mount point counts as one other file system and nothing else.
    SizeResult measureAt(int dirFd, const std::string& dirPath, const char* name) const;

private:
    SizeResult walk(int fd, const std::string& label) const;

    const std::atomic<bool>* cancel_;
    int threads_;
    std::vector<std::string> skipped_;
};

} // namespace tarvik
