#pragma once

#include "core/sys/directory_handle.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tarvik {

// What removing one entry did.
struct TreeRemoval {
    int error = 0;          // the first errno met; 0 when nothing failed
    std::int64_t freed = 0; // bytes of the regular files whose last name went
    // Entries inside that were left on purpose, by path: mount points (of any kind, bind mounts
    // of the same disk included) and the user's exclusions.
    std::vector<std::string> mountsLeft;
    std::vector<std::string> excludedLeft;
    bool left() const { return !mountsLeft.empty() || !excludedLeft.empty(); }
};

// Removes an entry of an open folder as rm does, and never more: a file or link with unlinkat
// (a link is removed as itself), a folder by walking its contents through handles that the
// kernel opens without following a link and without entering another mount, so no path is ever
// resolved again and a name swapped for a link meanwhile cannot send it anywhere else. Entries
// on another mount than `mountId`, and entries whose inode is in `excluded` (on that mount), are
// left where they are and named in the result. Keeps going past entries it cannot remove.
class TreeRemover {
public:
    TreeRemover(std::uint64_t mountId, std::vector<std::uint64_t> excludedInodes);

    // `path` names the entry in what is left; it is never used to reach anything.
    TreeRemoval remove(int dirFd, const char* name, std::string path) const;

private:
    void removeEntry(int dirFd, const char* name, std::string& path, TreeRemoval& out) const;
    bool isExcluded(std::uint64_t inode) const;

    std::uint64_t mountId_;
    std::vector<std::uint64_t> excluded_; // sorted
};

} // namespace tarvik
