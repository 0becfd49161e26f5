#include "core/sys/directory_handle.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tarvik {

UniqueFd& UniqueFd::operator=(UniqueFd&& o) noexcept {
    if (this != &o) {
        if (fd_ >= 0) {
            ::close(fd_);
        }
        fd_ = o.release();
    }
    return *this;
}

UniqueFd::~UniqueFd() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

namespace {

constexpr int kDirectoryFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// Calls `use(component)` for each component of "a/b/c"; false (errno EINVAL) when one is "..".
template <typename F> bool forEachComponent(std::string_view path, const F& use) {
    std::size_t pos = 0;
    while (pos < path.size()) {
        std::size_t slash = path.find('/', pos);
        if (slash == std::string_view::npos) {
            slash = path.size();
        }
        const std::string_view part = path.substr(pos, slash - pos);
        pos = slash + 1;
        if (part.empty() || part == ".") {
            continue;
        }
        if (part == "..") {
            errno = EINVAL; // paths here are canonical: refuse rather than climb
            return false;
        }
        if (!use(part)) {
            return false;
        }
    }
    return true;
}

// -1: not known yet; 0: the kernel has no openat2; 1: it has.
std::atomic<int> haveOpenat2 = -1;

} // namespace

UniqueFd openDirectoryNoFollow(const std::string& absolutePath) {
    if (absolutePath.empty() || absolutePath.front() != '/') {
        errno = EINVAL;
        return UniqueFd();
    }
    UniqueFd dir(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const bool walked =
        forEachComponent(std::string_view(absolutePath).substr(1), [&dir](std::string_view part) {
            const std::string name(part);
            dir = UniqueFd(::openat(dir.get(), name.c_str(), kDirectoryFlags));
            return dir.valid();
        });
    return walked ? std::move(dir) : UniqueFd(); // a ".." (EINVAL) or a failed open
}

std::uint64_t mountIdFrom(const struct statx& sx) {
    if ((sx.stx_mask & STATX_MNT_ID) != 0) {
        return sx.stx_mnt_id;
    }
    return (static_cast<std::uint64_t>(sx.stx_dev_major) << 32) | sx.stx_dev_minor;
}

bool isMountRoot(const struct statx& sx) {
    return (sx.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0 &&
           (sx.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

std::optional<std::uint64_t> mountIdOf(int fd) {
    struct statx sx {};
    if (::statx(fd, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_MNT_ID, &sx) != 0) {
        return std::nullopt;
    }
    return mountIdFrom(sx);
}

std::optional<std::uint64_t> mountIdAt(int dirFd, const char* name, struct statx& sx,
                                       unsigned mask) {
    if (::statx(dirFd, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, mask | STATX_MNT_ID, &sx) !=
        0) {
        return std::nullopt;
    }
    return mountIdFrom(sx);
}

std::optional<std::uint64_t> mountIdOfPath(const std::string& path) {
    struct statx sx {};
    if (::statx(AT_FDCWD, path.c_str(), AT_STATX_DONT_SYNC, STATX_MNT_ID, &sx) != 0) {
        return std::nullopt;
    }
    return mountIdFrom(sx);
}

std::string mountTopOf(const std::string& path) {
    const auto mount = mountIdOfPath(path);
    std::string top = path;
    while (mount && top.size() > 1) {
        const auto slash = top.rfind('/');
        const std::string parent = slash == 0 ? "/" : top.substr(0, slash);
        if (mountIdOfPath(parent) != mount) {
            break;
        }
        top = parent;
    }
    return top;
}

UniqueFd openBeneath(int base, std::string_view relative, bool crossMounts) {
    if (!forEachComponent(relative, [](std::string_view) { return true; })) {
        return UniqueFd(); // a ".." (errno EINVAL)
    }
    const std::string path = relative.empty() ? std::string(".") : std::string(relative);
    const int known = haveOpenat2.load(std::memory_order_relaxed);
    if (known != 0) {
        open_how how{};
        how.flags = kDirectoryFlags;
        how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS |
                      (crossMounts ? 0 : RESOLVE_NO_XDEV);
        const long fd = ::syscall(SYS_openat2, base, path.c_str(), &how, sizeof how);
        // Old kernels say ENOSYS; some container filters say EPERM for a call they don't know,
        // which opening a folder never says otherwise.
        const bool missing = fd < 0 && (errno == ENOSYS || (known < 0 && errno == EPERM));
        if (!missing) {
            haveOpenat2.store(1, std::memory_order_relaxed);
            return UniqueFd(static_cast<int>(fd));
        }
        haveOpenat2.store(0, std::memory_order_relaxed);
    }
    return openBeneathStepwise(base, relative, crossMounts);
}

UniqueFd openBeneathStepwise(int base, std::string_view relative, bool crossMounts) {
    // One component at a time, each opened without following a link and checked to be on the
    // starting mount.
    if (!forEachComponent(relative, [](std::string_view) { return true; })) {
        return UniqueFd();
    }
    const auto start = mountIdOf(base);
    UniqueFd dir(::openat(base, ".", kDirectoryFlags));
    if (!start || !dir.valid()) {
        return UniqueFd();
    }
    forEachComponent(relative, [&](std::string_view part) {
        const std::string name(part);
        dir = UniqueFd(::openat(dir.get(), name.c_str(), kDirectoryFlags));
        if (dir.valid() && !crossMounts && mountIdOf(dir.get()) != start) {
            dir = UniqueFd();
            errno = EXDEV;
        }
        return dir.valid();
    });
    return dir;
}

} // namespace tarvik
