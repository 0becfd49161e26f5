#pragma once

// What this process holds, read from /proc: the soak drivers compare it early and late.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <string>

namespace tarvik::soak {

// Resident memory in KiB (VmRSS).
inline std::int64_t residentKiB() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word == "VmRSS:") {
            std::int64_t kib = 0;
            status >> kib;
            return kib;
        }
    }
    return -1;
}

// What malloc holds, in KiB: handed out and not freed (a leak grows this), and freed but kept
// by the allocator (fragmentation grows this). Every arena, and the large blocks it maps apart.
struct HeapUse {
    std::int64_t inUseKiB;
    std::int64_t freeKiB;
};
inline HeapUse heapUse() {
    const struct mallinfo2 m = ::mallinfo2();
    return {static_cast<std::int64_t>((m.uordblks + m.hblkhd) / 1024),
            static_cast<std::int64_t>(m.fordblks / 1024)};
}

// Open file descriptors, less the one the count itself holds while it reads the folder.
inline int openDescriptors() {
    int n = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator("/proc/self/fd")) {
        ++n;
    }
    return n - 1;
}

// The drivers' table, one row per measurement, on stdout.
inline void printHeader() {
    std::printf("round,resident_kib,descriptors,heap_in_use_kib,heap_free_kib\n");
}
inline void printRow(int round) {
    const HeapUse heap = heapUse();
    std::printf("%d,%lld,%d,%lld,%lld\n", round, static_cast<long long>(residentKiB()),
                openDescriptors(), static_cast<long long>(heap.inUseKiB),
                static_cast<long long>(heap.freeKiB));
    std::fflush(stdout);
}

} // namespace tarvik::soak
