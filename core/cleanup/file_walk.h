#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/stat.h>

namespace tarvik {

// A fast walk of a folder tree: directory handles read with getdents64 (many entries per call,
// types included, so folders and links need no stat) and one statx per regular file, relative
// to its open folder. Every folder is opened below the handle of the starting folder with the
// kernel refusing symbolic links and mount points on the way, so the walk never follows a link,
// never leaves the mount it started on (bind mounts of the same disk included: a mounted folder
// or file is counted in `otherFileSystems` and passed over, like du -x but by mount) and is
// never sent elsewhere by a folder swapped for a link while it runs. Folders that can't be read
// are counted and passed over. Wide trees are listed by several threads from one queue.
class FileWalk {
public:
    struct Options {
        int threads = 0; // 0: from the machine's cores
        const std::atomic<bool>* cancel = nullptr;
        bool includeHidden = true;
        unsigned statxMask = STATX_TYPE | STATX_BLOCKS | STATX_NLINK | STATX_INO;
        // Whether to go into a folder, given its parent's path and its name; empty enters all.
        std::function<bool(const std::string& parent, const char* name)> enter;
        // Every regular file, on the thread that listed it (0 … threads()-1).
        std::function<void(int thread, const std::string& folder, const char* name,
                           const struct statx& file)>
            file;
        // Entries seen so far, called from the walking threads about every `progressEvery`.
        std::function<void(std::int64_t entries)> progress;
        std::int64_t progressEvery = 500;
    };
    struct Totals {
        std::int64_t entries = 0;
        std::int64_t unreadable = 0;       // folders that could not be listed
        std::int64_t otherFileSystems = 0; // mount points (folders and files) passed over
        int threads = 1;                   // how many threads listed folders
    };

    // Walks the folder `root`; the largest thread index passed to `file` is below the
    // returned `threads`.
    static Totals run(const std::string& root, const Options& options);
    // The same below an open folder, whose path the callbacks see as `label`.
    static Totals run(int rootFd, const std::string& label, const Options& options);
    // The thread count a walk may use, for callers that keep per-thread results.
    static int maximumThreads(const Options& options);
};

// "a/b" + "c" → "a/b/c".
std::string childPath(const std::string& folder, const char* name);

} // namespace tarvik
