#pragma once

// Files made and read with the kernel's own calls, bytes for names: for tests that build trees
// the program under test must not be trusted to build or read.
#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace tarvik::test {

inline std::string local(const QString& s) {
    return QFile::encodeName(s).toStdString();
}

inline QString qpath(const std::string& s) {
    return QFile::decodeName(QByteArray::fromStdString(s));
}

inline void mkdirs(const std::string& path) {
    std::error_code ec;
    std::filesystem::create_directories(path, ec);
    ASSERT_FALSE(ec) << path << ": " << ec.message();
}

inline void writeAll(const std::string& path, const std::string& contents) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0) << path << ": " << std::strerror(errno);
    std::size_t done = 0;
    while (done < contents.size()) {
        const ssize_t n = ::write(fd, contents.data() + done, contents.size() - done);
        ASSERT_GT(n, 0) << path;
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
}

// The whole of a file, never through a link; empty when it can't be opened.
inline std::string readAll(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        return {};
    }
    std::string out;
    char buffer[8192];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n <= 0) {
            break;
        }
        out.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(fd);
    return out;
}

// The temporary folder as the kernel names it, links above it resolved.
inline std::string realRoot(const QTemporaryDir& dir) {
    char buffer[PATH_MAX];
    return ::realpath(QFile::encodeName(dir.path()).constData(), buffer) != nullptr
               ? std::string(buffer)
               : local(dir.path());
}

} // namespace tarvik::test
