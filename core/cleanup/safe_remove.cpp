#include "core/cleanup/safe_remove.h"

#include "core/sys/file_calls.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarvik {
namespace {

void note(TreeRemoval& out, int error) {
    if (out.error == 0) {
        out.error = error;
    }
}

// The names in an open folder, each ending in NUL: collected first, as removing while reading
// a folder may skip or repeat entries.
int listNames(int fd, std::string& names) {
    char buffer[32 * 1024];
    for (;;) {
        const ssize_t n = sys::getdents64(fd, buffer, sizeof buffer);
        if (n < 0) {
            return errno;
        }
        if (n == 0) {
            return 0;
        }
        for (ssize_t off = 0; off < n;) {
            const auto* d = reinterpret_cast<const dirent64*>(buffer + off);
            off += d->d_reclen;
            const char* s = d->d_name;
            if (!(s[0] == '.' && (s[1] == '\0' || (s[1] == '.' && s[2] == '\0')))) {
                names.append(s);
                names.push_back('\0');
            }
        }
    }
}

} // namespace

bool TreeRemover::isExcluded(std::uint64_t inode) const {
    return std::binary_search(excluded_.begin(), excluded_.end(), inode);
}

TreeRemover::TreeRemover(std::uint64_t mountId, std::vector<std::uint64_t> excludedInodes)
    : mountId_(mountId), excluded_(std::move(excludedInodes)) {
    std::sort(excluded_.begin(), excluded_.end());
}

TreeRemoval TreeRemover::remove(int dirFd, const char* name, std::string path) const {
    TreeRemoval out;
    removeEntry(dirFd, name, path, out);
    return out;
}

void TreeRemover::removeEntry(int dirFd, const char* name, std::string& path,
                              TreeRemoval& out) const {
    struct statx sx {};
    const auto mount =
        mountIdAt(dirFd, name, sx, STATX_TYPE | STATX_INO | STATX_NLINK | STATX_BLOCKS);
    if (!mount) {
        if (errno != ENOENT) {
            note(out, errno);
        }
        return;
    }
    if (*mount != mountId_ || isMountRoot(sx)) {
        out.mountsLeft.push_back(path); // something is mounted here: never emptied from here
        return;
    }
    if (!excluded_.empty() && isExcluded(sx.stx_ino)) {
        out.excludedLeft.push_back(path);
        return;
    }
    if (!S_ISDIR(sx.stx_mode)) {
        if (sys::unlinkat(dirFd, name, 0) == 0) {
            if (S_ISREG(sx.stx_mode) && sx.stx_nlink == 1) {
                out.freed += static_cast<std::int64_t>(sx.stx_blocks) * 512;
            }
        } else if (errno != ENOENT) {
            note(out, errno);
        }
        return;
    }
    const UniqueFd child = openBeneath(dirFd, name);
    if (!child.valid()) {
        if (errno == ENOTDIR || errno == ELOOP) {
            // Swapped for a file or a link since it was looked at: that name goes, as itself.
            if (sys::unlinkat(dirFd, name, 0) != 0 && errno != ENOENT) {
                note(out, errno);
            }
        } else if (errno == EXDEV) {
            out.mountsLeft.push_back(path);
        } else if (sys::unlinkat(dirFd, name, AT_REMOVEDIR) != 0) {
            note(out, errno); // an unreadable folder can still go when it is empty
        }
        return;
    }
    struct statx opened {};
    if (sys::statx(child.get(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_INO, &opened) != 0 ||
        opened.stx_ino != sx.stx_ino) {
        note(out, EBUSY); // another folder took its name meanwhile: leave both alone
        return;
    }
    std::string names;
    if (const int e = listNames(child.get(), names); e != 0) {
        note(out, e);
    }
    const std::size_t length = path.size();
    for (std::size_t at = 0; at < names.size();) {
        const char* entry = names.c_str() + at;
        const std::size_t entryLength = std::char_traits<char>::length(entry);
        path.push_back('/');
        path.append(entry, entryLength);
        removeEntry(child.get(), entry, path, out);
        path.resize(length);
        at += entryLength + 1;
    }
    if (sys::unlinkat(dirFd, name, AT_REMOVEDIR) != 0 && errno != ENOENT) {
        // Left on purpose inside: the folder stays, and what was left says why.
        if (!(out.left() && (errno == ENOTEMPTY || errno == EEXIST || errno == EBUSY))) {
            note(out, errno);
        }
    }
}

} // namespace tarvik
