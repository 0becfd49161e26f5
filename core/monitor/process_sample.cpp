#include "core/monitor/process_sample.h"

#include "core/sys/file_calls.h"

#include <charconv>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarvik {
namespace {

constexpr std::uint64_t kKernelThreadFlag = 0x00200000; // PF_KTHREAD

template <typename T> bool parseNumber(std::string_view text, T& out) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), out);
    return error == std::errc() && end == text.data() + text.size();
}

// A pid directory's name: digits only.
bool pidName(const char* name, std::int32_t& pid) {
    const std::string_view text(name);
    return !text.empty() && text.front() != '0' && parseNumber(text, pid);
}

} // namespace

bool ProcessStat::kernelThread() const {
    return (flags & kKernelThreadFlag) != 0;
}

std::optional<ProcessStat> parseProcessStat(std::string_view text) {
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
        return std::nullopt;
    }
    ProcessStat stat;
    stat.name = text.substr(open + 1, close - open - 1);
    // Fields after the name, counted from 3 as proc(5) numbers them.
    std::string_view rest = text.substr(close + 1);
    int field = 2;
    bool ok = true;
    while (!rest.empty() && field < 24) {
        const auto start = rest.find_first_not_of(' ');
        if (start == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(start);
        const auto end = std::min(rest.find_first_of(" \n"), rest.size());
        const std::string_view token = rest.substr(0, end);
        rest.remove_prefix(end);
        ++field;
        switch (field) {
        case 3:
            stat.state = token.front();
            break;
        case 4:
            ok = ok && parseNumber(token, stat.parentPid);
            break;
        case 9:
            ok = ok && parseNumber(token, stat.flags);
            break;
        case 14:
            ok = ok && parseNumber(token, stat.userTicks);
            break;
        case 15:
            ok = ok && parseNumber(token, stat.systemTicks);
            break;
        case 22:
            ok = ok && parseNumber(token, stat.startTime);
            break;
        case 24:
            ok = ok && parseNumber(token, stat.residentPages);
            break;
        default:
            break;
        }
    }
    if (!ok || field < 24) {
        return std::nullopt;
    }
    return stat;
}

std::vector<ProcessSample> readProcesses(const ProcessReaderOptions& options) {
    std::vector<ProcessSample> out;
    const std::string procPath = (options.root / "proc").string();
    DIR* dir = sys::opendir(procPath.c_str());
    if (dir == nullptr) {
        return out;
    }
    const int procFd = sys::dirfd(dir);
    const long ticks = options.clockTicks > 0 ? options.clockTicks : sysconf(_SC_CLK_TCK);
    const long page = options.pageSize > 0 ? options.pageSize : sysconf(_SC_PAGESIZE);
    const std::uint64_t nsPerTick = 1'000'000'000ULL / static_cast<std::uint64_t>(ticks);
    // Buffers reused for every process: no allocation per entry beyond the sample itself.
    char relative[64];
    char text[1024];
    char link[4096];
    out.reserve(512);
    while (const dirent* entry = sys::readdir(dir)) {
        std::int32_t pid = 0;
        if (!pidName(entry->d_name, pid)) {
            continue;
        }
        const int prefix = std::snprintf(relative, sizeof relative, "%d/", pid);
        std::snprintf(relative + prefix, sizeof relative - prefix, "stat");
        const int fd = sys::openat(procFd, relative, O_RDONLY | O_CLOEXEC);
        if (fd < 0) {
            continue; // ended since the listing
        }
        const ssize_t n = sys::read(fd, text, sizeof text - 1);
        sys::close(fd);
        if (n <= 0) {
            continue;
        }
        const auto stat = parseProcessStat(std::string_view(text, static_cast<std::size_t>(n)));
        if (!stat) {
            continue;
        }
        ProcessSample& s = out.emplace_back();
        s.pid = pid;
        s.name.assign(stat->name);
        s.cpuTime = (stat->userTicks + stat->systemTicks) * nsPerTick;
        s.memory = stat->residentPages * static_cast<std::uint64_t>(page);
        s.startTime = stat->startTime;
        s.parentPid = stat->parentPid;
        s.kernelThread = stat->kernelThread();
        relative[prefix] = '\0';
        struct stat owner {};
        if (sys::fstatat(procFd, relative, &owner, 0) == 0) {
            s.uid = owner.st_uid;
        }
        if (s.kernelThread) {
            continue; // no executable to name
        }
        std::snprintf(relative + prefix, sizeof relative - prefix, "exe");
        const ssize_t len = sys::readlinkat(procFd, relative, link, sizeof link);
        if (len > 0 && static_cast<std::size_t>(len) < sizeof link) {
            std::string_view target(link, static_cast<std::size_t>(len));
            constexpr std::string_view kDeleted = " (deleted)";
            if (target.ends_with(kDeleted)) {
                target.remove_suffix(kDeleted.size()); // replaced by an update while running
            }
            s.path.emplace(target);
            // The kernel keeps 15 bytes of a name; the executable's file name is the whole one.
            const auto slash = target.rfind('/');
            const std::string_view base = target.substr(slash + 1);
            if (s.name.size() == 15 && base.size() > 15 && base.starts_with(s.name)) {
                s.name.assign(base);
            }
        }
    }
    sys::closedir(dir);
    return out;
}

} // namespace tarvik
