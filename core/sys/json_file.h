#pragma once

#include <QJsonDocument>
#include <QString>
#include <functional>

// Tarvik's own small JSON files (histories), which several Tarvik processes may change at once
// and which anything may have damaged.
namespace tarvik::JsonFile {

// No history of Tarvik's comes near this; a larger file is damage, not data, and is never read
// into memory.
inline constexpr qint64 kLargest = qint64{16} << 20;

enum class State {
    Missing,    // no file yet: an empty document
    Read,       // read and parsed
    Damaged,    // not JSON, or too large: an empty document
    Unreadable, // there but can't be opened: an empty document that must not be saved over
};
struct Contents {
    QJsonDocument document;
    State state = State::Missing;
};

Contents read(const QString& path);

// Changes the file as one step among processes: under an exclusive lock (flock on
// "<path>.lock"), reads it, lets `change` edit the document, and replaces the file atomically.
// A damaged file is kept beside it as "<path>.damaged" before a fresh one is written; an
// unreadable one is never written over. False when nothing could be written.
bool update(const QString& path, const std::function<void(QJsonDocument&)>& change);

} // namespace tarvik::JsonFile
