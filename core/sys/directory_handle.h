#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>

namespace tarvik {

// A file descriptor that closes itself.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& o) noexcept : fd_(o.release()) {}
    UniqueFd& operator=(UniqueFd&& o) noexcept;
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd();
    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

private:
    int fd_ = -1;
};

// Opens the folder at an absolute path one component at a time from "/", refusing any
// component that is a symbolic link: the folder opened is the one the path names now, never a
// place a link was swapped in to point to. Sets errno and returns an invalid handle on failure.
UniqueFd openDirectoryNoFollow(const std::string& absolutePath);

// Opens the folder `relative` ("a/b/c"; empty for `base` itself) below the open folder `base`,
// with the kernel refusing every symbolic link on the way (ELOOP or ENOTDIR), every ".." and,
// unless `crossMounts`, every mount point of any kind, bind mounts of the same disk included
// (EXDEV). Linux 5.6 and later do it in one openat2 call; older kernels get the same rules
// component by component. Sets errno and returns an invalid handle on failure.
UniqueFd openBeneath(int base, std::string_view relative, bool crossMounts = false);
// The same rules without openat2, for kernels before 5.6.
UniqueFd openBeneathStepwise(int base, std::string_view relative, bool crossMounts = false);

// The mount an open file or folder is on (STATX_MNT_ID; the device number on kernels before
// 5.8, which cannot tell bind mounts apart).
std::optional<std::uint64_t> mountIdOf(int fd);
// The same for an entry of a folder, never following a link; `sx` receives what statx read.
std::optional<std::uint64_t> mountIdAt(int dirFd, const char* name, struct statx& sx,
                                       unsigned mask);
// What statx said is the mount id: one function so every caller reads it the same way.
std::uint64_t mountIdFrom(const struct statx& sx);
// The entry is where a mount is attached (a bind-mounted file included).
bool isMountRoot(const struct statx& sx);
// The mount of the folder or file at `path` (links followed), if it can be read.
std::optional<std::uint64_t> mountIdOfPath(const std::string& path);
// The top folder of the mount that holds the existing absolute `path`: the path climbed while
// its parent is on the same mount.
std::string mountTopOf(const std::string& path);

} // namespace tarvik
