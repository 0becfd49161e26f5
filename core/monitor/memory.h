#pragma once

#include "core/monitor/meminfo.h"

#include <QString>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarvik {

enum class MemoryPressure { Normal, Warning, Critical };
QString title(MemoryPressure pressure);

struct MemoryStats {
    std::int64_t total = 0;
    std::int64_t free = 0;
    std::int64_t active = 0;
    std::int64_t inactive = 0;
    std::int64_t speculative = 0;
    std::int64_t wired = 0;
    std::int64_t compressed = 0;
    std::int64_t purgeable = 0;
    std::int64_t fileBacked = 0;
    std::int64_t anonymous = 0;
    std::int64_t swapUsed = 0;
    std::int64_t swapTotal = 0;
    std::optional<MemoryPressure> reportedPressure;

    std::int64_t appMemory() const;
    std::int64_t cachedFiles() const;
    std::int64_t used() const;
    std::int64_t available() const;
    double usedFraction() const;
    MemoryPressure estimatedPressure() const;
    MemoryPressure pressure() const;
};

// Linux's /proc/meminfo mapped onto the fields (docs/monitor.md explains each choice);
// `zramUsed` is the memory the zram swap devices take for their compressed pages.
std::optional<MemoryStats> memoryFromMeminfo(const platform::MemInfo& info, std::int64_t zramUsed);

// The kernel's pressure from /proc/pressure/memory (PSI); empty when the file is missing or
// malformed, so the estimate is used.
std::optional<MemoryPressure> parseMemoryPressure(std::string_view psi);

} // namespace tarvik
