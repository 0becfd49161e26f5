#include "core/monitor/memory.h"

#include <algorithm>
#include <charconv>

namespace tarvik {

QString title(MemoryPressure pressure) {
    switch (pressure) {
    case MemoryPressure::Normal:
        return QStringLiteral("Normal");
    case MemoryPressure::Warning:
        return QStringLiteral("Elevated");
    case MemoryPressure::Critical:
        return QStringLiteral("Critical");
    }
    return {};
}

std::int64_t MemoryStats::appMemory() const {
    return std::max<std::int64_t>(anonymous - purgeable, 0);
}

std::int64_t MemoryStats::cachedFiles() const {
    return std::max<std::int64_t>(purgeable + fileBacked, 0);
}

std::int64_t MemoryStats::used() const {
    return std::min(appMemory() + wired + compressed, total);
}

std::int64_t MemoryStats::available() const {
    return std::max<std::int64_t>(total - used(), 0);
}

double MemoryStats::usedFraction() const {
    return total < 1 ? 0.0 : static_cast<double>(used()) / static_cast<double>(total);
}

MemoryPressure MemoryStats::estimatedPressure() const {
    if (total < 1) {
        return MemoryPressure::Normal;
    }
    const double t = static_cast<double>(total);
    const double a = static_cast<double>(free + speculative + cachedFiles()) / t;
    const double c = static_cast<double>(compressed) / t;
    if (a < 0.05 && c > 0.25) {
        return MemoryPressure::Critical;
    }
    if (c > 0.3 || a < 0.1) {
        return MemoryPressure::Warning;
    }
    return MemoryPressure::Normal;
}

MemoryPressure MemoryStats::pressure() const {
    return reportedPressure.value_or(estimatedPressure());
}

std::optional<MemoryStats> memoryFromMeminfo(const platform::MemInfo& m, std::int64_t zramUsed) {
    if (!m.memTotal || !m.memFree) {
        return std::nullopt;
    }
    auto v = [](const std::optional<std::uint64_t>& f) {
        return static_cast<std::int64_t>(f.value_or(0));
    };
    MemoryStats s;
    s.total = v(m.memTotal);
    s.free = v(m.memFree);
    s.active = v(m.active);
    s.inactive = v(m.inactive);
    // Shared memory and tmpfs sit in "Cached" but cannot be dropped: they are swap-backed like
    // an application's own pages, so they count as application memory, not as cache.
    s.anonymous = v(m.anonPages) + v(m.shmem);
    s.fileBacked =
        std::max<std::int64_t>(v(m.buffers) + v(m.cached) - v(m.shmem) + v(m.sReclaimable), 0);
    s.compressed = v(m.zswap) + std::max<std::int64_t>(zramUsed, 0);
    // Kernel memory that cannot be reclaimed or swapped out. The itemised slabs, stacks and
    // page tables miss reservations, drivers and the firmware's share; the kernel's own
    // MemAvailable covers them, so whatever it holds back beyond applications and compressed
    // pages counts as wired, and "used" agrees with `free` and the desktop's monitors.
    const std::int64_t itemised =
        v(m.sUnreclaim) + v(m.kernelStack) + v(m.pageTables) + v(m.percpu);
    const std::int64_t heldBack =
        m.memAvailable ? s.total - v(m.memAvailable) - s.anonymous - s.compressed : 0;
    s.wired = std::max(itemised, heldBack);
    s.swapTotal = v(m.swapTotal);
    s.swapUsed = std::max<std::int64_t>(s.swapTotal - v(m.swapFree), 0);
    return s;
}

std::optional<MemoryPressure> parseMemoryPressure(std::string_view psi) {
    // "some avg10=1.53 avg60=… total=…" and "full avg10=0.00 …": the share of the last ten
    // seconds in which some (or all) tasks waited for memory.
    std::optional<double> some;
    std::optional<double> full;
    while (!psi.empty()) {
        const auto eol = psi.find('\n');
        const auto line = psi.substr(0, eol);
        psi = eol == std::string_view::npos ? std::string_view{} : psi.substr(eol + 1);
        const auto key = line.find("avg10=");
        if (key == std::string_view::npos) {
            continue;
        }
        const auto number = line.substr(key + 6);
        double value = 0;
        if (std::from_chars(number.data(), number.data() + number.size(), value).ec !=
            std::errc{}) {
            continue;
        }
        if (line.starts_with("some ")) {
            some = value;
        } else if (line.starts_with("full ")) {
            full = value;
        }
    }
    if (!some) {
        return std::nullopt;
    }
    if (full.value_or(0) >= 5.0) {
        return MemoryPressure::Critical;
    }
    if (*some >= 10.0 || full.value_or(0) >= 1.0) {
        return MemoryPressure::Warning;
    }
    return MemoryPressure::Normal;
}

} // namespace tarvik
