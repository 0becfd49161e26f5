#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <limits>
#include <optional>
#include <sys/stat.h>

namespace tarvik {

// A file as a search saw it. A removal that carries one goes ahead only while the file is
// still that one: same inode, same length, same modification time.
struct FileSnapshot {
    static constexpr std::int64_t kUndated = std::numeric_limits<std::int64_t>::min();
    std::uint64_t inode = 0;
    std::int64_t length = 0;
    std::int64_t modifiedNs = kUndated; // undated never matches a file read again
    bool operator==(const FileSnapshot&) const = default;
    // What statx read (with STATX_INO, STATX_SIZE and STATX_MTIME asked for).
    static FileSnapshot of(const struct statx& sx);
};

// A copy that stays when its duplicate goes, as the search saw it.
struct KeptCopy {
    QString path;
    FileSnapshot scanned;
    bool operator==(const KeptCopy&) const = default;
};

// The unit every scanner offers and the remover consumes. Its identity is its path.
struct CleanableItem {
    QString path;          // absolute; bytes that are not UTF-8 held as fileName escapes
    std::int64_t size = 0; // allocated bytes, as measured by the scanner
    std::optional<QDateTime> modified;
    std::optional<QString> detail;
    std::optional<FileSnapshot> scanned = std::nullopt; // the file must still be this one
    std::optional<KeptCopy> keptCopy = std::nullopt; // a duplicate: its kept copy must stay as seen

    const QString& id() const { return path; }
    QString name() const;
    QDateTime modifiedOrDistantPast() const;
    bool operator==(const CleanableItem&) const = default;
};

} // namespace tarvik
