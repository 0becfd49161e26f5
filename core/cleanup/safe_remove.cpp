#include "core/cleanup/safe_remove.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

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

UniqueFd openDirectoryNoFollow(const std::string& absolutePath) {
    if (absolutePath.empty() || absolutePath.front() != '/') {
        errno = EINVAL;
        return UniqueFd();
    }
    UniqueFd dir(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::size_t pos = 1;
    while (dir.valid() && pos < absolutePath.size()) {
        const std::size_t slash = absolutePath.find('/', pos);
        const std::string part =
            absolutePath.substr(pos, slash == std::string::npos ? std::string::npos : slash - pos);
        pos = slash == std::string::npos ? absolutePath.size() : slash + 1;
        if (part.empty() || part == ".") {
            continue;
        }
        if (part == "..") {
            errno = EINVAL; // canonical paths have none; refuse rather than climb
            return UniqueFd();
        }
        dir = UniqueFd(
            ::openat(dir.get(), part.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    return dir;
}

namespace {

int removeDirectoryContents(int dirFd, dev_t dev) {
    // Entries are collected first: removing while reading a directory stream is undefined.
    const int copy = ::dup(dirFd);
    if (copy < 0) {
        return errno;
    }
    DIR* stream = ::fdopendir(copy);
    if (stream == nullptr) {
        const int e = errno;
        ::close(copy);
        return e;
    }
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* d = ::readdir(stream)) {
        const char* n = d->d_name;
        if (!(n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0')))) {
            names.emplace_back(n);
        }
    }
    const int listError = errno;
    ::closedir(stream);
    int first = listError;
    for (const auto& n : names) {
        const int e = removeEntryAt(dirFd, n.c_str(), dev);
        if (e != 0 && first == 0) {
            first = e;
        }
    }
    return first;
}

} // namespace

int removeEntryAt(int dirFd, const char* name, dev_t dev) {
    struct stat st {};
    if (::fstatat(dirFd, name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT ? 0 : errno;
    }
    if (!S_ISDIR(st.st_mode)) {
        return ::unlinkat(dirFd, name, 0) == 0 || errno == ENOENT ? 0 : errno;
    }
    if (st.st_dev != dev) {
        return EXDEV; // a file system mounted below: never emptied from here
    }
    UniqueFd child(::openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!child.valid()) {
        // ENOTDIR or ELOOP: it was swapped for a file or link since fstatat; remove that name.
        if (errno == ENOTDIR || errno == ELOOP) {
            return ::unlinkat(dirFd, name, 0) == 0 ? 0 : errno;
        }
        // An unreadable but empty folder can still be removed.
        return ::unlinkat(dirFd, name, AT_REMOVEDIR) == 0 ? 0 : errno;
    }
    struct stat opened {};
    if (::fstat(child.get(), &opened) != 0 || opened.st_ino != st.st_ino || opened.st_dev != dev) {
        return EXDEV;
    }
    const int contents = removeDirectoryContents(child.get(), dev);
    if (::unlinkat(dirFd, name, AT_REMOVEDIR) == 0) {
        return 0;
    }
    return contents != 0 ? contents : errno;
}

} // namespace tarvik
