#include "core/agents/log_lines.h"

#include <QFile>
#include <QString>
#include <cstring>
#include <vector>

namespace tarvik::LogLines {
namespace {

void deliver(const char* begin, const char* end,
             const std::function<void(QByteArrayView)>& onLine) {
    if (end > begin && end[-1] == '\r') {
        --end;
    }
    onLine(QByteArrayView(begin, end - begin));
}

} // namespace

bool forEach(const std::filesystem::path& file, const std::function<void(QByteArrayView)>& onLine) {
    QFile f(QString::fromStdString(file.string()));
    // Unbuffered: the blocks go straight into this buffer, not through Qt's own first.
    if (!f.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return false;
    }
    // One buffer per thread for every file: thousands of logs would otherwise each allocate
    // and clear a megabyte.
    thread_local std::vector<char> buffer(std::size_t{1} << 20);
    std::size_t filled = 0;  // bytes in the buffer
    std::size_t scanned = 0; // bytes already known to hold no line break
    for (;;) {
        if (filled == buffer.size()) {
            buffer.resize(buffer.size() * 2); // a line longer than the buffer
        }
        const qint64 n =
            f.read(buffer.data() + filled, static_cast<qint64>(buffer.size() - filled));
        if (n <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(n);
        const char* const data = buffer.data();
        std::size_t start = 0;
        while (const void* hit = std::memchr(data + scanned, '\n', filled - scanned)) {
            const auto* lineEnd = static_cast<const char*>(hit);
            deliver(data + start, lineEnd, onLine);
            start = static_cast<std::size_t>(lineEnd - data) + 1;
            scanned = start;
        }
        // The unfinished line moves to the front for the next block.
        std::memmove(buffer.data(), data + start, filled - start);
        filled -= start;
        scanned = filled;
    }
    if (filled > 0) {
        deliver(buffer.data(), buffer.data() + filled, onLine);
    }
    return true;
}

bool mentions(QByteArrayView line, std::string_view marker) {
    return ::memmem(line.data(), static_cast<std::size_t>(line.size()), marker.data(),
                    marker.size()) != nullptr;
}

} // namespace tarvik::LogLines
