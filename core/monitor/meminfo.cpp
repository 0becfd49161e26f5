#include "core/monitor/meminfo.h"

#include <charconv>

namespace tarvik::platform {

MemInfo parseMeminfo(std::string_view text) {
    MemInfo m;
    struct Field {
        std::string_view name;
        std::optional<std::uint64_t> MemInfo::*member;
    };
    static constexpr Field kFields[] = {
        {"MemTotal", &MemInfo::memTotal},
        {"MemFree", &MemInfo::memFree},
        {"MemAvailable", &MemInfo::memAvailable},
        {"Buffers", &MemInfo::buffers},
        {"Cached", &MemInfo::cached},
        {"SwapTotal", &MemInfo::swapTotal},
        {"SwapFree", &MemInfo::swapFree},
        {"Active", &MemInfo::active},
        {"Inactive", &MemInfo::inactive},
        {"AnonPages", &MemInfo::anonPages},
        {"Shmem", &MemInfo::shmem},
        {"SReclaimable", &MemInfo::sReclaimable},
        {"SUnreclaim", &MemInfo::sUnreclaim},
        {"KernelStack", &MemInfo::kernelStack},
        {"PageTables", &MemInfo::pageTables},
        {"Percpu", &MemInfo::percpu},
        {"Zswap", &MemInfo::zswap},
    };
    while (!text.empty()) {
        const auto eol = text.find('\n');
        std::string_view line = text.substr(0, eol);
        text = eol == std::string_view::npos ? std::string_view{} : text.substr(eol + 1);
        const auto colon = line.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        const auto name = line.substr(0, colon);
        std::string_view rest = line.substr(colon + 1);
        while (!rest.empty() && rest.front() == ' ') {
            rest.remove_prefix(1);
        }
        std::uint64_t value = 0;
        const auto [end, ec] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
        if (ec != std::errc{}) {
            continue;
        }
        // Every size field is in kibibytes ("kB"); the unit is absent only on counts.
        const bool kib =
            std::string_view(end, rest.data() + rest.size()).find("kB") != std::string_view::npos;
        for (const auto& f : kFields) {
            if (f.name == name && kib) {
                m.*(f.member) = value * 1024;
            }
        }
    }
    return m;
}

} // namespace tarvik::platform
