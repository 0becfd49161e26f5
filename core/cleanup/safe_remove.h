#pragma once

#include <string>
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

// Removes `name` inside the folder `dirFd`: a file or link with unlinkat, a folder by walking
// its contents through handles (as rm does), never following a link and never entering another
// file system (`dev` is the file system of `dirFd`). Keeps going past entries it cannot remove.
// Returns 0 when `name` is gone, else the first errno met.
int removeEntryAt(int dirFd, const char* name, dev_t dev);

} // namespace tarvik
