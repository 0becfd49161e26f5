#include "core/cleanup/directory_sizer.h"

#include "core/cleanup/file_walk.h"
#include "core/sys/directory_handle.h"
#include "core/sys/file_calls.h"
#include "core/sys/file_names.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace tarvik {
namespace {

// A file with several names, kept until the end so each is counted once.
struct Linked {
    ino_t ino;
    std::uint32_t nlink;
    std::int64_t bytes;
    bool operator<(const Linked& o) const { return ino < o.ino; }
};

struct Tally {
    std::int64_t bytes = 0; // files with one name
    std::int64_t files = 0;
    std::vector<Linked> linked;
};

SizeResult total(std::vector<Tally>& tallies) {
    SizeResult r;
    std::vector<Linked> linked;
    for (auto& t : tallies) {
        r.allocated += t.bytes;
        r.releasable += t.bytes;
        r.files += t.files;
        linked.insert(linked.end(), t.linked.begin(), t.linked.end());
    }
    std::sort(linked.begin(), linked.end());
    for (std::size_t i = 0; i < linked.size();) {
        std::size_t j = i;
        while (j < linked.size() && !(linked[i] < linked[j]) && !(linked[j] < linked[i])) {
            ++j;
        }
        r.allocated += linked[i].bytes;
        // Removing frees the file only when every one of its names is in what is removed.
        if (j - i >= linked[i].nlink) {
            r.releasable += linked[i].bytes;
        }
        i = j;
    }
    return r;
}

} // namespace

SizeResult DirectorySizer::measure(const QString& path) const {
    return measure(fileName::encode(path));
}

namespace {

SizeResult ofFile(const struct statx& sx) {
    SizeResult r;
    r.allocated = static_cast<std::int64_t>(sx.stx_blocks) * 512;
    r.releasable = sx.stx_nlink > 1 ? 0 : r.allocated;
    r.files = S_ISREG(sx.stx_mode) ? 1 : 0;
    return r;
}

constexpr unsigned kMask = STATX_TYPE | STATX_BLOCKS | STATX_NLINK;

} // namespace

SizeResult DirectorySizer::measure(const std::string& path) const {
    struct statx sx {};
    if (sys::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, kMask, &sx) !=
            0 ||
        S_ISLNK(sx.stx_mode)) {
        return {};
    }
    if (!S_ISDIR(sx.stx_mode)) {
        return ofFile(sx);
    }
    const UniqueFd fd(sys::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.valid()) {
        SizeResult r;
        r.unreadable = 1;
        return r;
    }
    return walk(fd.get(), path);
}

SizeResult DirectorySizer::measureAt(int dirFd, const std::string& dirPath,
                                     const char* name) const {
    struct statx sx {};
    if (sys::statx(dirFd, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, kMask, &sx) != 0 ||
        S_ISLNK(sx.stx_mode)) {
        return {};
    }
    SizeResult r;
    if (isMountRoot(sx)) {
        r.otherFileSystems = 1;
        return r;
    }
    if (!S_ISDIR(sx.stx_mode)) {
        return ofFile(sx);
    }
    const UniqueFd fd = openBeneath(dirFd, name);
    if (!fd.valid()) {
        ++(errno == EXDEV ? r.otherFileSystems : r.unreadable);
        return r;
    }
    return walk(fd.get(), childPath(dirPath, name));
}

SizeResult DirectorySizer::walk(int fd, const std::string& label) const {
    FileWalk::Options o;
    o.threads = threads_;
    o.cancel = cancel_;
    std::atomic<std::int64_t> skipped = 0;
    if (!skipped_.empty()) {
        o.enter = [this, &skipped](const std::string& parent, const char* name) {
            const std::string path = childPath(parent, name);
            if (std::find(skipped_.begin(), skipped_.end(), path) == skipped_.end()) {
                return true;
            }
            ++skipped;
            return false;
        };
    }
    std::vector<Tally> tallies(static_cast<std::size_t>(FileWalk::maximumThreads(o)));
    o.file = [&tallies](int thread, const std::string&, const char*, const struct statx& sx) {
        Tally& t = tallies[static_cast<std::size_t>(thread)];
        const auto bytes = static_cast<std::int64_t>(sx.stx_blocks) * 512;
        ++t.files;
        if (sx.stx_nlink > 1) {
            // One walk stays on one mount, so the inode number alone is the file.
            t.linked.push_back({static_cast<ino_t>(sx.stx_ino), sx.stx_nlink, bytes});
        } else {
            t.bytes += bytes;
        }
    };
    const FileWalk::Totals walked = FileWalk::run(fd, label, o);
    SizeResult result = total(tallies);
    result.unreadable = walked.unreadable;
    result.otherFileSystems = walked.otherFileSystems;
    result.skipped = skipped.load();
    return result;
}

} // namespace tarvik
