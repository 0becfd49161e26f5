#include "core/agents/spend/log_lines.h"

#include "core/sys/file_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#if defined(__x86_64__)
#include <immintrin.h>
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
            sys::close(fd);
        }
    }
};

// Up to `size` bytes at `offset`; fewer only at the end of the file, -1 on an error.
ssize_t readAt(int fd, char* into, std::size_t size, off_t offset) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n =
            sys::pread(fd, into + done, size - done, offset + static_cast<off_t>(done));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return done > 0 ? static_cast<ssize_t>(done) : n;
        }
        done += static_cast<std::size_t>(n);
    }
    return static_cast<ssize_t>(done);
}

// Where the line holding the byte at `inside` starts, looking back through the file from there;
// -1 when the file changed under the read.
off_t lineStartBefore(int fd, off_t inside) {
    char back[16 << 10];
    for (off_t to = inside; to > 0;) {
        const off_t from = std::max<off_t>(0, to - static_cast<off_t>(sizeof back));
        const auto want = static_cast<std::size_t>(to - from);
        if (readAt(fd, back, want, from) != static_cast<ssize_t>(want)) {
            return -1;
        }
        if (const void* br = ::memrchr(back, '\n', want)) {
            return from + (static_cast<const char*>(br) - back) + 1;
        }
        to = from;
    }
    return 0;
}

// Where the line after the byte at `at` starts, read forward in a small buffer; -1 when there is
// none.
off_t nextLineAfter(int fd, off_t at) {
    char ahead[64 << 10];
    for (;;) {
        const ssize_t got = readAt(fd, ahead, sizeof ahead, at);
        if (got <= 0) {
            return -1;
        }
        if (const void* br = std::memchr(ahead, '\n', static_cast<std::size_t>(got))) {
            return at + (static_cast<const char*>(br) - ahead) + 1;
        }
        at += got;
    }
}

// Hands out the line that starts at `start`, of which `line` already holds the first bytes,
// reading the rest a block at a time; one longer than kLongestLine is skipped and counted. Where
// the next line starts, or -1 when this was the last.
off_t deliverLongLine(int fd, off_t start, std::vector<char>& line,
                      const std::function<void(QByteArrayView)>& onLine, Read& read) {
    for (off_t at = start + static_cast<off_t>(line.size());;) {
        if (line.size() > kLongestLine) {
            ++read.skippedLines;
            line = {}; // the memory goes back too: the buffer is the thread's for every file
            return nextLineAfter(fd, at);
        }
        const std::size_t had = line.size();
        line.resize(had + kReadBlock);
        const ssize_t got = readAt(fd, line.data() + had, kReadBlock, at);
        line.resize(had + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        const void* br =
            got > 0 ? std::memchr(line.data() + had, '\n', static_cast<std::size_t>(got)) : nullptr;
        if (br || got <= 0) {
            const std::size_t length =
                br ? static_cast<std::size_t>(static_cast<const char*>(br) - line.data())
                   : line.size();
            line.resize(std::max(line.size(), length + kReadableAfterLine));
            deliver(line.data(), line.data() + length, onLine);
            return br ? start + static_cast<off_t>(length) + 1 : -1;
        }
        at += got;
    }
}

} // namespace

Markers::Markers(std::initializer_list<std::string_view> markers) {
    for (std::string_view m : markers) {
        // Quotes are the commonest bytes in JSON: the letters inside them rule out more places.
        const bool quoted = m.size() >= 4;
        Probe probe{m, std::size_t{quoted ? 1U : 0U}, quoted ? m.size() - 2 : m.size() - 1};
        probes_.push_back(probe);
        longest_ = std::max(longest_, m.size());
    }
}

bool Markers::at(const char* p, const char* end) const {
    for (const Probe& probe : probes_) {
        if (static_cast<std::size_t>(end - p) >= probe.text.size() &&
            p[probe.first] == probe.text[probe.first] &&
            p[probe.second] == probe.text[probe.second] &&
            std::memcmp(p, probe.text.data(), probe.text.size()) == 0) {
            return true;
        }
    }
    return false;
}

#if defined(__x86_64__)
namespace {

// A marker's first byte and its two letters, each 32 times over.
struct Wide {
    __m256i first, a, b;
    std::size_t offA, offB;
};

// The places in the 32 bytes at `p` where a marker's three bytes are where they belong.
__attribute__((target("avx2"), always_inline)) inline std::uint32_t
candidates(const Wide* wide, std::size_t count, const char* p) {
    const __m256i start = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    std::uint32_t mask = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Wide& w = wide[i];
        const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + w.offA));
        const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + w.offB));
        const __m256i hit = _mm256_and_si256(
            _mm256_and_si256(_mm256_cmpeq_epi8(start, w.first), _mm256_cmpeq_epi8(a, w.a)),
            _mm256_cmpeq_epi8(b, w.b));
        mask |= static_cast<std::uint32_t>(_mm256_movemask_epi8(hit));
    }
    return mask;
}

} // namespace

// 64 places a round. Compiled for AVX2 on its own and chosen when the processor has it.
__attribute__((target("avx2"))) const char* Markers::findWide(const char* p,
                                                              const char* end) const {
    Wide wide[kMostProbes];
    const std::size_t count = probes_.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Probe& probe = probes_[i];
        wide[i] = {_mm256_set1_epi8(probe.text[0]), _mm256_set1_epi8(probe.text[probe.first]),
                   _mm256_set1_epi8(probe.text[probe.second]), probe.first, probe.second};
    }
    for (; end - p >= static_cast<std::ptrdiff_t>(64 + longest_); p += 64) {
        for (std::uint64_t mask =
                 candidates(wide, count, p) | std::uint64_t{candidates(wide, count, p + 32)} << 32;
             mask != 0; mask &= mask - 1) {
            const char* q = p + __builtin_ctzll(mask);
            if (at(q, end)) {
                return q;
            }
        }
    }
    for (; p < end; ++p) {
        if (at(p, end)) {
            return p;
        }
    }
    return nullptr;
}
#endif

const char* Markers::find(const char* begin, const char* end) const {
    if (probes_.empty()) {
        return begin < end ? begin : nullptr;
    }
    const char* p = begin;
#if defined(__x86_64__)
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (avx2 && probes_.size() <= kMostProbes) {
        return findWide(p, end);
    }
    // 32 places a round, 16 at a time, as findWide does.
    auto candidates = [&](const char* block) {
        auto load = [](const char* b) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
        };
        unsigned mask = 0;
        for (const Probe& probe : probes_) {
            const __m128i hit = _mm_and_si128(
                _mm_and_si128(_mm_cmpeq_epi8(load(block), _mm_set1_epi8(probe.text[0])),
                              _mm_cmpeq_epi8(load(block + probe.first),
                                             _mm_set1_epi8(probe.text[probe.first]))),
                _mm_cmpeq_epi8(load(block + probe.second),
                               _mm_set1_epi8(probe.text[probe.second])));
            mask |= static_cast<unsigned>(_mm_movemask_epi8(hit));
        }
        return mask;
    };
    for (; end - p >= static_cast<std::ptrdiff_t>(32 + longest_); p += 32) {
        for (unsigned mask = candidates(p) | candidates(p + 16) << 16; mask != 0;
             mask &= mask - 1) {
            const char* q = p + __builtin_ctz(mask);
            if (at(q, end)) {
                return q;
            }
        }
    }
#endif
    for (; p < end; ++p) {
        if (at(p, end)) {
            return p;
        }
    }
    return nullptr;
}

bool Markers::in(QByteArrayView line) const {
    return find(line.data(), line.data() + line.size()) != nullptr;
}

const char* withRoomAfter(QByteArrayView line, std::size_t readableAfter, std::size_t need) {
    if (readableAfter >= need) {
        return line.data();
    }
    thread_local std::string copy;
    copy.assign(line.data(), static_cast<std::size_t>(line.size()));
    copy.append(need, ' ');
    return copy.data();
}

Read forEach(const std::filesystem::path& file, const Markers& markers,
             const std::function<void(QByteArrayView)>& onLine) {
    Read read;
    const Descriptor f{sys::open(file.c_str(), O_RDONLY | O_CLOEXEC)};
    if (f.fd < 0) {
        return read;
    }
    read.opened = true;
    // The last bytes of a block are searched again with the next one, so no marker is cut.
    const std::size_t overlap = markers.longest() > 0 ? markers.longest() - 1 : 0;
    // One buffer per thread for every file: thousands of logs would otherwise each allocate one.
    thread_local std::vector<char> buffer;
    thread_local std::vector<char> longLine;
    buffer.resize(std::max(buffer.size(), kReadBlock + overlap + kReadableAfterLine));
    off_t base = 0;         // where in the file buffer[0] is
    std::size_t filled = 0; // bytes in the buffer
    bool frontStartsLine = true;
    for (;;) {
        const ssize_t n =
            readAt(f.fd, buffer.data() + filled, kReadBlock, base + static_cast<off_t>(filled));
        const bool last = n <= 0;
        if (!last) {
            filled += static_cast<std::size_t>(n);
        }
        const char* const data = buffer.data();
        const char* const end = data + filled;
        const char* from = data;
        // Lines without a marker are never split out: only a marker's own line is looked for.
        off_t resume = -1; // where the next block starts when a line went past this one
        while (const char* hit = markers.find(from, end)) {
            const void* before = ::memrchr(data, '\n', static_cast<std::size_t>(hit - data));
            const char* lineStart = before            ? static_cast<const char*>(before) + 1
                                    : frontStartsLine ? data
                                                      : nullptr;
            const void* after = std::memchr(hit, '\n', static_cast<std::size_t>(end - hit));
            if (lineStart && (after || last)) {
                const char* lineEnd = after ? static_cast<const char*>(after) : end;
                deliver(lineStart, lineEnd, onLine);
                if (!after) {
                    return read;
                }
                from = lineEnd + 1;
                continue;
            }
            // The line goes on past this block, or began before it: read whole on its own.
            off_t start = base + (lineStart ? lineStart - data : 0);
            longLine.clear();
            if (lineStart) {
                longLine.assign(lineStart, end);
            } else if ((start = lineStartBefore(f.fd, base)) < 0) {
                return read;
            }
            resume = deliverLongLine(f.fd, start, longLine, onLine, read);
            if (resume < 0) {
                return read;
            }
            break;
        }
        if (resume >= 0) {
            base = resume;
            filled = 0;
            frontStartsLine = true;
            continue;
        }
        if (last) {
            return read;
        }
        const std::size_t keep =
            std::min<std::size_t>(overlap, static_cast<std::size_t>(end - from));
        const std::size_t drop = filled - keep;
        frontStartsLine = drop == 0 ? frontStartsLine : data[drop - 1] == '\n';
        std::memmove(buffer.data(), data + drop, keep);
        base += static_cast<off_t>(drop);
        filled = keep;
    }
}

Read forEach(const std::filesystem::path& file, const std::function<void(QByteArrayView)>& onLine) {
    return forEach(file, Markers(), onLine);
}

} // namespace tarvik::LogLines
