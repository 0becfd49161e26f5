#include "core/monitor/cpu.h"

#include "core/sys/system_files.h"
#include "core/text/counts.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tarvik {
namespace {

std::string_view nextToken(std::string_view& s) {
    const auto begin = s.find_first_not_of(' ');
    if (begin == std::string_view::npos) {
        s = {};
        return {};
    }
    s.remove_prefix(begin);
    const auto end = s.find(' ');
    const auto token = s.substr(0, end);
    s = end == std::string_view::npos ? std::string_view{} : s.substr(end);
    return token;
}

double clamp01(double v) {
    return std::clamp(v, 0.0, 1.0);
}

} // namespace

QString CPUTopology::summary() const {
    auto cores = [](int n) {
        return countOf(n, u"core", u"cores");
    };
    if (performance && efficiency) {
        return QStringLiteral("%1 (%2 performance, %3 efficiency)")
            .arg(cores(logicalCores))
            .arg(*performance)
            .arg(*efficiency);
    }
    return cores(logicalCores);
}

ProcStat parseProcStat(std::string_view text) {
    ProcStat out;
    while (!text.empty()) {
        const auto eol = text.find('\n');
        std::string_view line = text.substr(0, eol);
        text = eol == std::string_view::npos ? std::string_view{} : text.substr(eol + 1);
        const auto name = nextToken(line);
        if (name == "btime") {
            std::int64_t v = 0;
            const auto token = nextToken(line);
            if (std::from_chars(token.data(), token.data() + token.size(), v).ec == std::errc{} &&
                v >= 1) {
                out.bootTime = v;
            }
            continue;
        }
        // "cpu" alone is the machine total; the sampler sums the cores itself.
        if (!name.starts_with("cpu") || name.size() == 3) {
            continue;
        }
        // user nice system idle iowait irq softirq steal guest guest_nice
        std::array<std::uint64_t, 8> f{};
        std::size_t count = 0;
        bool ok = true;
        while (count < f.size()) {
            const auto token = nextToken(line);
            if (token.empty()) {
                break;
            }
            ok = std::from_chars(token.data(), token.data() + token.size(), f[count]).ec ==
                 std::errc{};
            if (!ok) {
                break;
            }
            ++count;
        }
        if (!ok || count < 4) {
            continue; // a damaged line loses that core, not the sample
        }
        out.cores.push_back({f[0], f[2] + f[5] + f[6] + f[7], f[3] + f[4], f[1]});
    }
    return out;
}

CPUUsage cpuUsage(const CPUTicks& before, const CPUTicks& now) {
    const std::uint64_t user = (now.user - before.user) + (now.nice - before.nice);
    const std::uint64_t system = now.system - before.system;
    const std::uint64_t total = user + system + (now.idle - before.idle);
    if (total == 0) {
        return CPUUsage::zero();
    }
    return {clamp01(static_cast<double>(user) / static_cast<double>(total)),
            clamp01(static_cast<double>(system) / static_cast<double>(total))};
}

std::optional<CPULoads> cpuLoads(const CPUSnapshot& before, const CPUSnapshot& now) {
    if (before.empty() || before.size() != now.size()) {
        return std::nullopt;
    }
    CPULoads loads;
    CPUTicks deltas; // summed per core, so one core's wrap cannot disturb the total
    for (std::size_t i = 0; i < now.size(); ++i) {
        loads.perCore.push_back(cpuUsage(before[i], now[i]));
        deltas.user += now[i].user - before[i].user;
        deltas.nice += now[i].nice - before[i].nice;
        deltas.system += now[i].system - before[i].system;
        deltas.idle += now[i].idle - before[i].idle;
    }
    loads.total = cpuUsage(CPUTicks{}, deltas);
    return loads;
}

std::optional<int> countCpuList(std::string_view list) {
    while (!list.empty() && (list.back() == '\n' || list.back() == ' ')) {
        list.remove_suffix(1);
    }
    if (list.empty()) {
        return std::nullopt;
    }
    // The kernel counts at most 8,192 CPUs: a list of more is damage, and adding its ranges up
    // would overflow.
    constexpr std::int64_t kMostCpus = 8192;
    std::int64_t count = 0;
    while (!list.empty()) {
        const auto comma = list.find(',');
        const auto range = list.substr(0, comma);
        list = comma == std::string_view::npos ? std::string_view{} : list.substr(comma + 1);
        const auto dash = range.find('-');
        int first = 0;
        int last = 0;
        const auto a = range.substr(0, dash);
        if (std::from_chars(a.data(), a.data() + a.size(), first).ec != std::errc{}) {
            return std::nullopt;
        }
        last = first;
        if (dash != std::string_view::npos) {
            const auto b = range.substr(dash + 1);
            if (std::from_chars(b.data(), b.data() + b.size(), last).ec != std::errc{} ||
                last < first) {
                return std::nullopt;
            }
        }
        count += std::int64_t{last} - first + 1;
        if (count > kMostCpus) {
            return std::nullopt;
        }
    }
    return static_cast<int>(count);
}

CPUTopology readTopology(const std::filesystem::path& root, int fallbackCores) {
    using platform::readSmallFile;
    CPUTopology t;
    const auto present = readSmallFile(root, "sys/devices/system/cpu/present");
    t.logicalCores = present ? countCpuList(*present).value_or(fallbackCores) : fallbackCores;
    const auto core = readSmallFile(root, "sys/devices/cpu_core/cpus");
    const auto atom = readSmallFile(root, "sys/devices/cpu_atom/cpus");
    if (core && atom) {
        t.performance = countCpuList(*core);
        t.efficiency = countCpuList(*atom);
        if (!t.performance || !t.efficiency) {
            t.performance.reset();
            t.efficiency.reset();
        }
    }
    return t;
}

} // namespace tarvik
