#include "core/agents/log_lines.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarvik::LogLines {
namespace {

void deliver(const char* begin, const char* end,
             const std::function<void(QByteArrayView)>& onLine) {
    if (end > begin && end[-1] == '\r') {
        --end;
    }
    onLine(QByteArrayView(begin, end - begin));
}

// Closes the descriptor however the read ends.
struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) {
            ::close(fd);
        }
    }
};

} // namespace

Markers::Markers(std::initializer_list<std::string_view> markers) {
    for (std::string_view m : markers) {
        // Quotes are the commonest bytes in JSON: the letters inside them rule out more places.
        const bool quoted = m.size() >= 4;
        Probe probe{m, std::size_t{quoted ? 1U : 0U}, quoted ? m.size() - 2 : m.size() - 1, {}};
        std::memset(probe.wanted[0], m[0], 16);
        std::memset(probe.wanted[1], m[probe.first], 16);
        std::memset(probe.wanted[2], m[probe.second], 16);
        probes_.push_back(probe);
        longest_ = std::max(longest_, m.size());
    }
}

const char* Markers::find(const char* begin, const char* end) const {
    if (probes_.empty()) {
        return begin < end ? begin : nullptr;
    }
    auto at = [&](const char* p) {
        for (const Probe& probe : probes_) {
            if (static_cast<std::size_t>(end - p) >= probe.text.size() &&
                p[probe.first] == probe.text[probe.first] &&
                p[probe.second] == probe.text[probe.second] &&
                std::memcmp(p, probe.text.data(), probe.text.size()) == 0) {
                return true;
            }
        }
        return false;
    };
    const char* p = begin;
#if defined(__SSE2__)
    // 32 places at a time: a marker's first byte and both letters must be where they belong.
    auto candidates = [&](const char* block) {
        unsigned mask = 0;
        for (const Probe& probe : probes_) {
            auto load = [](const char* b) {
                return _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
            };
            auto want = [&](int i) {
                return _mm_load_si128(reinterpret_cast<const __m128i*>(probe.wanted[i]));
            };
            const __m128i hit =
                _mm_and_si128(_mm_and_si128(_mm_cmpeq_epi8(load(block), want(0)),
                                            _mm_cmpeq_epi8(load(block + probe.first), want(1))),
                              _mm_cmpeq_epi8(load(block + probe.second), want(2)));
            mask |= static_cast<unsigned>(_mm_movemask_epi8(hit));
        }
        return mask;
    };
    for (; end - p >= static_cast<std::ptrdiff_t>(32 + longest_); p += 32) {
        for (unsigned mask = candidates(p) | candidates(p + 16) << 16; mask != 0;
             mask &= mask - 1) {
            const char* q = p + __builtin_ctz(mask);
            if (at(q)) {
                return q;
            }
        }
    }
#endif
    for (; p < end; ++p) {
        if (at(p)) {
            return p;
        }
    }
    return nullptr;
}

bool Markers::in(QByteArrayView line) const {
    return find(line.data(), line.data() + line.size()) != nullptr;
}

bool forEach(const std::filesystem::path& file, const Markers& markers,
             const std::function<void(QByteArrayView)>& onLine) {
    const Descriptor f{::open(file.c_str(), O_RDONLY | O_CLOEXEC)};
    if (f.fd < 0) {
        return false;
    }
    // One buffer per thread for every file: thousands of logs would otherwise each allocate
    // and clear a megabyte.
    thread_local std::vector<char> buffer(std::size_t{1} << 20);
    std::size_t filled = 0;  // bytes in the buffer
    std::size_t scanned = 0; // bytes already known to hold no line break
    for (;;) {
        if (filled == buffer.size()) {
            buffer.resize(buffer.size() * 2); // a line longer than the buffer
        }
        ssize_t n;
        do {
            n = ::read(f.fd, buffer.data() + filled, buffer.size() - filled);
        } while (n < 0 && errno == EINTR);
        const bool last = n <= 0;
        if (!last) {
            filled += static_cast<std::size_t>(n);
        }
        const char* const data = buffer.data();
        const char* const end = data + filled;
        // Only whole lines are searched, so no marker is cut by the end of a block.
        const char* whole = end;
        if (!last) {
            const void* lastBreak = ::memrchr(data + scanned, '\n', filled - scanned);
            if (!lastBreak) {
                scanned = filled;
                continue;
            }
            whole = static_cast<const char*>(lastBreak) + 1;
        }
        for (const char* from = data; const char* hit = markers.find(from, whole);) {
            const void* before = ::memrchr(from, '\n', static_cast<std::size_t>(hit - from));
            const char* lineStart = before ? static_cast<const char*>(before) + 1 : from;
            const void* after = std::memchr(hit, '\n', static_cast<std::size_t>(whole - hit));
            const char* lineEnd = after ? static_cast<const char*>(after) : whole;
            deliver(lineStart, lineEnd, onLine);
            if (lineEnd == whole) {
                break;
            }
            from = lineEnd + 1;
        }
        if (last) {
            break;
        }
        // The unfinished line moves to the front for the next block.
        filled = static_cast<std::size_t>(end - whole);
        std::memmove(buffer.data(), whole, filled);
        scanned = filled;
    }
    return true;
}

bool forEach(const std::filesystem::path& file, const std::function<void(QByteArrayView)>& onLine) {
    return forEach(file, Markers(), onLine);
}

} // namespace tarvik::LogLines
