#pragma once

#include <QByteArrayView>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace tarvik::LogLines {

// The few quoted names that tell the lines worth parsing ("\"usage\"", "\"token_count\"").
// They are looked for 16 bytes at a time by their first byte and two letters, then compared whole:
// several times faster than memmem on the long lines of tool output that make up most of a log.
class Markers {
public:
    Markers() = default; // none: every line
    Markers(std::initializer_list<std::string_view> markers);
    // Where the first marker in [begin, end) starts, or null.
    const char* find(const char* begin, const char* end) const;
    // Whether `line` holds a marker.
    bool in(QByteArrayView line) const;
    bool empty() const { return probes_.empty(); }

private:
    struct Probe {
        std::string_view text;
        std::size_t first; // offsets of the two letters compared at once
        std::size_t second;
        // The first byte and the two letters, each 16 times over, ready to compare with.
        alignas(16) char wanted[3][16];
    };
    std::vector<Probe> probes_;
    std::size_t longest_ = 0;
};

// Calls `onLine` with each line of the file that holds one of `markers` (every line when there
// are none), without its line break, in order; the last line counts even without a break. The
// file is read in large blocks into one reused buffer, so a log of any size costs neither a copy
// per line nor memory for the whole file, and the markers are looked for in the whole block, so
// the lines without one are never split out. A view is valid only during its call. False when
// the file can't be opened.
bool forEach(const std::filesystem::path& file, const Markers& markers,
             const std::function<void(QByteArrayView)>& onLine);
bool forEach(const std::filesystem::path& file, const std::function<void(QByteArrayView)>& onLine);

} // namespace tarvik::LogLines
