#pragma once

// What the fuzz targets share: the input as the parsers take it, and as a file or a tree for
// the readers that open files themselves.
#include <QByteArray>
#include <QDateTime>
#include <QTimeZone>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tarvik::fuzz {

inline std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
inline QByteArray bytes(const std::uint8_t* data, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}
// A fixed moment, so that a finding replays the same way on any day.
inline QDateTime now() {
    return QDateTime(QDate(2026, 11, 25), QTime(12, 0), QTimeZone::utc());
}

// The input as a file in memory (memfd), for the readers that take a path; it goes with the
// object.
class InputFile {
public:
    InputFile(const std::uint8_t* data, std::size_t size);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    const std::filesystem::path& path() const { return path_; }

private:
    int fd_ = -1;
    std::filesystem::path path_;
};

// The input unpacked into a fresh folder, for the readers that take a root directory. The input
// is a run of entries, each ended by a NUL byte: a first line naming the file under the root,
// then the file's bytes; a first line "path -> target" makes a symbolic link instead.
class InputTree {
public:
    InputTree(const std::uint8_t* data, std::size_t size);
    ~InputTree();
    InputTree(const InputTree&) = delete;
    InputTree& operator=(const InputTree&) = delete;
    const std::filesystem::path& root() const { return root_; }

private:
    std::filesystem::path root_;
};

// A folder as InputTree reads it back: its files up to `largestFile` bytes and its relative
// symbolic links, in name order.
std::string packTree(const std::filesystem::path& folder, std::uintmax_t largestFile = 16 << 10);

} // namespace tarvik::fuzz
