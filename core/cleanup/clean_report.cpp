#include "core/cleanup/clean_report.h"

#include "core/text/counts.h"
#include "core/text/metric_format.h"

#include <QStringList>
#include <QtGlobal>
#include <algorithm>

namespace tarvik {
namespace {

void add(std::int64_t& total, std::int64_t bytes) {
    if (__builtin_add_overflow(total, bytes, &total)) {
        qFatal("Removed byte count overflowed");
    }
}

} // namespace

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
    add(freedBytes, bytes);
}

void CleanReport::addRemoved(const CleanableItem& item, RemovalMode mode, std::int64_t bytes) {
    add(mode == RemovalMode::MoveToTrash ? trashedBytes : freedBytes, bytes);
    removed.push_back(item);
    removedModes.push_back(mode);
}

void CleanReport::merge(const CleanReport& other) {
    add(freedBytes, other.freedBytes);
    add(trashedBytes, other.trashedBytes);
    removed.insert(removed.end(), other.removed.begin(), other.removed.end());
    removedModes.insert(removedModes.end(), other.removedModes.begin(), other.removedModes.end());
    failures.insert(failures.end(), other.failures.begin(), other.failures.end());
}

QString cleanSummary(const CleanReport& report, QStringView one, QStringView many) {
    QStringList sentences;
    if (const int trashed = report.removedCount(RemovalMode::MoveToTrash); trashed > 0) {
        sentences << QStringLiteral("Moved %1 (%2) to the Trash.")
                         .arg(countOf(trashed, one, many),
                              MetricFormat::bytes(report.trashedBytes));
    }
    if (const int deleted = report.removedCount(RemovalMode::DeletePermanently); deleted > 0) {
        sentences << QStringLiteral("Deleted %1, %2 freed.")
                         .arg(countOf(deleted, one, many), MetricFormat::bytes(report.freedBytes));
    } else if (report.freedBytes > 0) {
        // Nothing went whole, but folders deleted in part gave space back.
        sentences << QStringLiteral("%1 freed.").arg(MetricFormat::bytes(report.freedBytes));
    }
    if (const auto failed = static_cast<std::int64_t>(report.failures.size()); failed > 0) {
        sentences << QStringLiteral("%1 couldn't be removed.").arg(countOf(failed, one, many));
    }
    if (sentences.isEmpty()) {
        return QStringLiteral("Nothing was removed.");
    }
    return sentences.join(QLatin1Char(' '));
}

} // namespace tarvik
