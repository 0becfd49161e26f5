#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <optional>

namespace tarvik {

// The unit every scanner offers and the remover consumes. Its identity is its path.
struct CleanableItem {
    QString path;          // absolute
    std::int64_t size = 0; // allocated bytes, as measured by the scanner
    std::optional<QDateTime> modified;
    std::optional<QString> detail;

    const QString& id() const { return path; }
    QString name() const;
    QDateTime modifiedOrDistantPast() const;
    bool operator==(const CleanableItem&) const = default;
};

} // namespace tarvik
