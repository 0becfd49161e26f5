#include "core/platform/system_files.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace tarvik::platform {

std::optional<std::string> readSmallFile(const std::filesystem::path& root,
                                         const std::filesystem::path& relative) {
    const auto path = root / relative.relative_path();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return std::nullopt;
    }
    // procfs files report size 0, so read until end instead of trusting stat.
    std::string out;
    std::array<char, 4096> buf{};
    for (;;) {
        const ssize_t n = ::read(fd, buf.data(), buf.size());
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            ::close(fd);
            return std::nullopt;
        }
        if (n == 0) {
            break;
        }
        out.append(buf.data(), static_cast<std::size_t>(n));
    }
    ::close(fd);
    return out;
}

} // namespace tarvik::platform
