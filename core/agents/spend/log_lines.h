#pragma once

#include <QByteArrayView>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace tarvik::LogLines {

// The few quoted names that tell the lines worth parsing ("\"usage\"", "\"token_count\"").
// They are looked for 16 or 32 bytes at a time by their first byte and two letters, then compared
// whole: several times faster than memmem on the long lines of tool output that make up most of a
// log.
class Markers {
public:
    Markers() = default; // none: every line
    Markers(std::initializer_list<std::string_view> markers);
    // Where the first marker in [begin, end) starts, or null.
    const char* find(const char* begin, const char* end) const;
    // Whether `line` holds a marker.
    bool in(QByteArrayView line) const;
    bool empty() const { return probes_.empty(); }
    std::size_t longest() const { return longest_; }

private:
    struct Probe {
        std::string_view text;
        std::size_t first; // offsets of the two letters compared at once
        std::size_t second;
    };
    // Whether a marker starts at p and ends by `end`.
    bool at(const char* p, const char* end) const;
    // find() 32 bytes at a time, for processors with AVX2 and up to kMostProbes markers.
    const char* findWide(const char* p, const char* end) const;
    static constexpr std::size_t kMostProbes = 4;

    std::vector<Probe> probes_;
    std::size_t longest_ = 0;
};

// How much of a file forEach reads at a time: a block and its copy stay in the core's own cache
// while they are searched.
inline constexpr std::size_t kReadBlock = std::size_t{256} << 10;

// Every line forEach hands out is followed in memory by at least this many bytes that may be
// read (never written), so a parser that reads a little past its input can take it where it is.
inline constexpr std::size_t kReadableAfterLine = 64;

// A line longer than this is skipped, not read: no answer an agent logs comes near it, and a
// file of one endless line must not cost its length in memory.
inline constexpr std::size_t kLongestLine = std::size_t{16} << 20;

// What reading a file came to.
struct Read {
    bool opened = false;
    std::int64_t skippedLines = 0; // lines with a marker longer than kLongestLine
    explicit operator bool() const { return opened; }
};

// The line's bytes where `need` bytes after them may be read: the line itself when
// `readableAfter` is enough, else a copy in a buffer of the calling thread, valid until its next
// call.
const char* withRoomAfter(QByteArrayView line, std::size_t readableAfter, std::size_t need);

// Calls `onLine` with each line of the file that holds one of `markers` (every line when there
// are none), without its line break, in order; the last line counts even without a break. The
// file is read a block at a time into one reused buffer and the markers are looked for in the
// whole block, so the lines without one are never split out, and a log of any size costs neither a
// copy per line nor memory for more than a block; a line with a marker that goes past its block
// is read again on its own, up to kLongestLine (longer ones are skipped and counted). A view is
// valid only during its call.
Read forEach(const std::filesystem::path& file, const Markers& markers,
             const std::function<void(QByteArrayView)>& onLine);
Read forEach(const std::filesystem::path& file, const std::function<void(QByteArrayView)>& onLine);

} // namespace tarvik::LogLines
