#include "core/cleanup/clean_report.h"

#include "core/text/metric_format.h"

#include <QtGlobal>
#include <algorithm>

namespace tarvik {

QSet<QString> CleanReport::removedIDs() const {
    QSet<QString> ids;
    for (const auto& item : removed) {
        ids.insert(item.id());
    }
    return ids;
}

int CleanReport::removedCount(RemovalMode mode) const {
    return static_cast<int>(std::count(removedModes.begin(), removedModes.end(), mode));
}

void CleanReport::addFreed(std::int64_t bytes) {
    if (__builtin_add_overflow(freedBytes, bytes, &freedBytes)) {
        qFatal("Freed byte count overflowed");
    }
}

void CleanReport::addRemoved(const CleanableItem& item, RemovalMode mode, std::int64_t bytes) {
    addFreed(bytes);
    if (mode == RemovalMode::MoveToTrash) {
        trashedBytes += bytes;
    }
    removed.push_back(item);
    removedModes.push_back(mode);
}

void CleanReport::merge(const CleanReport& other) {
    addFreed(other.freedBytes);
    trashedBytes += other.trashedBytes;
    removed.insert(removed.end(), other.removed.begin(), other.removed.end());
    removedModes.insert(removedModes.end(), other.removedModes.begin(), other.removedModes.end());
    failures.insert(failures.end(), other.failures.begin(), other.failures.end());
}

QString cleanSummary(const CleanReport& report, const QString& one, const QString& many) {
    const auto items = [&](int n) {
        return QStringLiteral("%1 %2").arg(n).arg(n == 1 ? one : many);
    };
    const int trashed = report.removedCount(RemovalMode::MoveToTrash);
    const int deleted = static_cast<int>(report.removed.size()) - trashed;
    const std::int64_t deletedBytes = report.freedBytes - report.trashedBytes;
    const QString intoTrash =
        QStringLiteral("moved %1 to the Trash, %2 freed once the Trash is emptied")
            .arg(items(trashed), MetricFormat::bytes(report.trashedBytes));
    if (trashed == 0) {
        return QStringLiteral("Removed %1, %2 freed.")
            .arg(items(deleted), MetricFormat::bytes(deletedBytes));
    }
    if (deleted == 0 && deletedBytes == 0) {
        return intoTrash.at(0).toUpper() + intoTrash.mid(1) + QLatin1Char('.');
    }
    return QStringLiteral("Removed %1, %2 freed; %3.")
        .arg(items(deleted), MetricFormat::bytes(deletedBytes), intoTrash);
}

} // namespace tarvik
