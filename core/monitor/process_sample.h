#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik {

// One process as one sample saw it.
struct ProcessSample {
    std::int32_t pid = 0;
    std::string name;
    std::optional<std::string> path; // the executable; none for kernel threads and, unless
                                     // Tarvik runs as root, for other users' processes
    std::uint64_t cpuTime = 0;       // user + system, nanoseconds
    std::uint64_t memory = 0;        // resident, bytes
    std::uint64_t startTime = 0;     // clock ticks after boot: with the pid, one process
    std::uint32_t uid = 0;
    std::int32_t parentPid = 0;
    bool kernelThread = false;
};

// The fields of /proc/<pid>/stat that a sample needs.
struct ProcessStat {
    std::string_view name; // points into the parsed text
    char state = '?';
    std::int32_t parentPid = 0;
    std::uint64_t flags = 0;
    std::uint64_t userTicks = 0;
    std::uint64_t systemTicks = 0;
    std::uint64_t startTime = 0;
    std::uint64_t residentPages = 0;
    bool kernelThread() const;
};
// Parses one stat line; the name may hold spaces and parentheses, so it runs to the last ')'.
std::optional<ProcessStat> parseProcessStat(std::string_view text);

struct ProcessReaderOptions {
    std::filesystem::path root = "/";
    long clockTicks = 0; // per second; 0 asks the system
    long pageSize = 0;   // bytes; 0 asks the system
};

// Every process under <root>/proc. A process that ends while it is read, or whose files can't
// be read, is left out; nothing here fails the whole list.
std::vector<ProcessSample> readProcesses(const ProcessReaderOptions& options = {});

} // namespace tarvik
