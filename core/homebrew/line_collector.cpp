#include "core/homebrew/line_collector.h"

#include <QStringList>

namespace tarvik {

void LineCollector::append(const QByteArray& data) {
    QStringList lines;
    {
        std::lock_guard lock(mutex_);
        buffer_.append(data);
        qsizetype start = 0;
        const char* bytes = buffer_.constData();
        for (qsizetype i = scanned_; i < buffer_.size(); ++i) {
            const char c = bytes[i];
            if (c == '\r' || c == '\n') {
                lines << QString::fromUtf8(bytes + start, i - start);
                start = i + 1;
            }
        }
        buffer_.remove(0, start);
        scanned_ = buffer_.size();
        for (const QString& line : lines) {
            text_ += line + QLatin1Char('\n');
        }
    }
    emitLines(lines); // outside the lock: receivers may take their time
}

void LineCollector::flush() {
    QStringList lines;
    {
        std::lock_guard lock(mutex_);
        if (!buffer_.isEmpty()) {
            lines << QString::fromUtf8(buffer_);
            text_ += lines.front() + QLatin1Char('\n');
            buffer_.clear();
            scanned_ = 0;
        }
    }
    emitLines(lines);
}

QString LineCollector::text() const {
    std::lock_guard lock(mutex_);
    return text_;
}

void LineCollector::emitLines(const QStringList& lines) {
    if (onLine_) {
        for (const QString& line : lines) {
            onLine_(line);
        }
    }
}

} // namespace tarvik
