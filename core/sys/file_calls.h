#pragma once

// The file-system calls the walkers, the hasher, the log reader and the remover make, as thin
// inline wrappers with the kernel's own signatures: the loops stay where they are and cost
// nothing more, and every door to the OS is found here. Descriptors are opened close-on-exec.
#include <cerrno>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace tarvik::sys {

inline int open(const char* path, int flags, mode_t mode = 0) {
    return ::open(path, flags | O_CLOEXEC, mode);
}
inline int openat(int dirFd, const char* path, int flags, mode_t mode = 0) {
    return ::openat(dirFd, path, flags | O_CLOEXEC, mode);
}
inline int close(int fd) {
    return ::close(fd);
}
inline ssize_t read(int fd, void* buffer, std::size_t size) {
    ssize_t n;
    while ((n = ::read(fd, buffer, size)) < 0 && errno == EINTR) {
    }
    return n;
}
inline ssize_t write(int fd, const void* buffer, std::size_t size) {
    ssize_t n;
    while ((n = ::write(fd, buffer, size)) < 0 && errno == EINTR) {
    }
    return n;
}
inline ssize_t pread(int fd, void* buffer, std::size_t size, off_t offset) {
    ssize_t n;
    while ((n = ::pread(fd, buffer, size, offset)) < 0 && errno == EINTR) {
    }
    return n;
}
inline int statx(int dirFd, const char* path, int flags, unsigned mask, struct statx* out) {
    return ::statx(dirFd, path, flags, mask, out);
}
inline int stat(const char* path, struct stat* out) {
    return ::stat(path, out);
}
inline int lstat(const char* path, struct stat* out) {
    return ::lstat(path, out);
}
inline int fstat(int fd, struct stat* out) {
    return ::fstat(fd, out);
}
inline int fstatat(int dirFd, const char* path, struct stat* out, int flags) {
    return ::fstatat(dirFd, path, out, flags);
}
inline int statvfs(const char* path, struct statvfs* out) {
    return ::statvfs(path, out);
}
inline ssize_t getdents64(int fd, void* buffer, std::size_t size) {
    return ::getdents64(fd, buffer, size);
}
inline int unlinkat(int dirFd, const char* path, int flags) {
    return ::unlinkat(dirFd, path, flags);
}
inline int mkdirat(int dirFd, const char* path, mode_t mode) {
    return ::mkdirat(dirFd, path, mode);
}
inline int renameat(int fromDir, const char* from, int toDir, const char* to) {
    return ::renameat(fromDir, from, toDir, to);
}
inline int renameat2(int fromDir, const char* from, int toDir, const char* to, unsigned flags) {
    return ::renameat2(fromDir, from, toDir, to, flags);
}
inline int linkat(int fromDir, const char* from, int toDir, const char* to, int flags) {
    return ::linkat(fromDir, from, toDir, to, flags);
}
inline int access(const char* path, int mode) {
    return ::access(path, mode);
}
inline DIR* opendir(const char* path) {
    return ::opendir(path);
}
inline dirent* readdir(DIR* dir) {
    return ::readdir(dir);
}
inline int closedir(DIR* dir) {
    return ::closedir(dir);
}
inline int dirfd(DIR* dir) {
    return ::dirfd(dir);
}
inline ssize_t readlinkat(int dirFd, const char* path, char* buffer, std::size_t size) {
    return ::readlinkat(dirFd, path, buffer, size);
}
inline int flock(int fd, int operation) {
    return ::flock(fd, operation);
}

} // namespace tarvik::sys
