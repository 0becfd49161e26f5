// One process sample as System Monitor and `tarvik ps` take it: every /proc/<pid> read and
// turned into table rows. With --repeat N it takes N samples in one process and prints the
// time per sample, to set apart the program's start-up.
#include "core/monitor/process_sample.h"
#include "core/monitor/process_tracker.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv) {
    int repeat = 1;
    if (argc == 3 && std::strcmp(argv[1], "--repeat") == 0) {
        repeat = std::max(1, std::atoi(argv[2]));
    }
    tarvik::ProcessTracker tracker;
    std::size_t rows = 0;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < repeat; ++i) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        rows =
            tracker.update(tarvik::readProcesses(), std::chrono::nanoseconds(now).count()).size();
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (repeat > 1) {
        std::printf("%zu processes, %.3f ms per sample\n", rows, seconds * 1000.0 / repeat);
    } else {
        std::printf("%zu\n", rows);
    }
    return 0;
}
