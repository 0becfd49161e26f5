#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <mutex>

namespace tarvik {

// Turns a child's byte stream into lines. A carriage return ends a line just as a line feed
// does, so the progress bars brew and curl redraw in place arrive as separate lines; an
// unfinished line (even one cut inside a multi-byte character) waits for the next bytes. Each
// byte is looked at once, so one line of many megabytes costs no more than many short ones.
class LineCollector {
public:
    explicit LineCollector(std::function<void(const QString&)> onLine = {})
        : onLine_(std::move(onLine)) {}

    void append(const QByteArray& data);
    // The unfinished last line, if any, becomes a line.
    void flush();
    QString text() const;

private:
    void emitLines(const QStringList& lines);

    mutable std::mutex mutex_;
    QByteArray buffer_;
    qsizetype scanned_ = 0; // bytes of buffer_ already known to hold no line break
    QString text_;
    std::function<void(const QString&)> onLine_;
};

} // namespace tarvik
