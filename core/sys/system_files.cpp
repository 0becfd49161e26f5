#include "core/sys/system_files.h"

#include <array>
#include <cerrno>
#include <charconv>
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

namespace {

std::string_view trimmed(std::string_view s) {
    constexpr std::string_view kSpace = " \t\r\n";
    const auto begin = s.find_first_not_of(kSpace);
    if (begin == std::string_view::npos) {
        return {};
    }
    return s.substr(begin, s.find_last_not_of(kSpace) - begin + 1);
}

} // namespace

std::optional<std::string> readAttribute(const std::filesystem::path& root,
                                         const std::filesystem::path& relative) {
    auto text = readSmallFile(root, relative);
    if (!text) {
        return std::nullopt;
    }
    return std::string(trimmed(*text));
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
    text = trimmed(text);
    std::int64_t value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || end != text.data() + text.size() || text.empty()) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::int64_t> readInteger(const std::filesystem::path& root,
                                        const std::filesystem::path& relative) {
    auto text = readSmallFile(root, relative);
    return text ? parseInteger(*text) : std::nullopt;
}

} // namespace tarvik::platform
