#pragma once

// How much memory a piece of work held at its worst: the heap's bytes in use, sampled every
// millisecond on a thread of its own while the work runs. The allocator's own count, not the
// resident size: the sanitizer build keeps freed memory resident in quarantine (up to 256 MiB),
// which would hide what the work itself held.
#include <QtGlobal>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer runtime's own count (sanitizer/allocator_interface.h, which GCC doesn't ship).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace tarvik::test {

inline qint64 heapInUse() {
#if defined(__SANITIZE_ADDRESS__)
    return static_cast<qint64>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 m = mallinfo2();
    return static_cast<qint64>(m.uordblks + m.hblkhd);
#endif
}

// The most the heap in use grew above where it stood before `work`, in MiB.
inline double heapGrowthMiB(const std::function<void()>& work) {
    const qint64 before = heapInUse();
    std::atomic<qint64> peak = before;
    std::atomic<bool> done = false;
    std::thread sampler([&] {
        while (!done) {
            peak = std::max(peak.load(), heapInUse());
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    work();
    done = true;
    sampler.join();
    return static_cast<double>(std::max(peak.load(), heapInUse()) - before) / (1 << 20);
}

} // namespace tarvik::test
