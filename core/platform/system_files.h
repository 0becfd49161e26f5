#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tarvik::platform {

// Reads a small kernel file such as /proc/meminfo below `root`. Missing or unreadable files
// are "not reported", never an error.
std::optional<std::string> readSmallFile(const std::filesystem::path& root,
                                         const std::filesystem::path& relative);

} // namespace tarvik::platform
