#pragma once

#include <QByteArrayView>
#include <filesystem>
#include <functional>
#include <string_view>

namespace tarvik::LogLines {

// Calls `onLine` with each line of the file, without its line break, in order; the last line
// counts even without a break. The file is read in large blocks into one reused buffer, so a log
// of any size costs neither a copy per line nor memory for the whole file; a view is valid only
// during its call. False when the file can't be opened.
bool forEach(const std::filesystem::path& file, const std::function<void(QByteArrayView)>& onLine);

// Whether `line` holds `marker`: the cheap test that decides which lines get parsed at all
// (glibc's memmem, several times faster than a generic search on long lines).
bool mentions(QByteArrayView line, std::string_view marker);

} // namespace tarvik::LogLines
