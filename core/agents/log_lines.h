#pragma once

#include <QByteArrayView>
#include <filesystem>
#include <functional>

namespace tarvik::LogLines {

// Calls `onLine` with each line of the file, without its line break, in order; the last line
// counts even without a break. The file is read in large blocks into one reused buffer, so a log
// of any size costs neither a copy per line nor memory for the whole file; a view is valid only
// during its call. False when the file can't be opened.
bool forEach(const std::filesystem::path& file, const std::function<void(QByteArrayView)>& onLine);

} // namespace tarvik::LogLines
