#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::platform {

// Reads a small kernel file such as /proc/meminfo below `root`. Missing or unreadable files
// are "not reported", never an error.
std::optional<std::string> readSmallFile(const std::filesystem::path& root,
                                         const std::filesystem::path& relative);

// A sysfs attribute's text without surrounding white space.
std::optional<std::string> readAttribute(const std::filesystem::path& root,
                                         const std::filesystem::path& relative);
// A sysfs attribute holding one integer; empty when missing or not a number.
std::optional<std::int64_t> readInteger(const std::filesystem::path& root,
                                        const std::filesystem::path& relative);
// Parses one integer (surrounding white space allowed); empty when it is anything else.
std::optional<std::int64_t> parseInteger(std::string_view text);

} // namespace tarvik::platform
