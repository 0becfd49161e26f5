#pragma once

#include "core/cleanup/cleanable_item.h"
#include "core/cleanup/removal_mode.h"

#include <QSet>
#include <QUuid>
#include <vector>

namespace tarvik {

struct CleanFailure {
    QUuid id = QUuid::createUuid();
    CleanableItem item;
    QString message;
};

struct CleanReport {
    // What deleting gave back to the disk, with what a folder deleted only in part gave.
    std::int64_t freedBytes = 0;
    // What went to the Trash: it stays on the disk until the Trash is emptied, so it is never
    // part of `freedBytes`.
    std::int64_t trashedBytes = 0;
    std::vector<CleanableItem> removed; // in removal order
    std::vector<CleanFailure> failures; // in order of occurrence
    // How each removed item went (beside `removed`): one run can both delete (Trash contents)
    // and move to the Trash.
    std::vector<RemovalMode> removedModes;

    QSet<QString> removedIDs() const;
    int removedCount(RemovalMode mode) const;
    void merge(const CleanReport& other);
    // Adds freed bytes; a sum past 2^63 cannot come from real disks and is a fatal error.
    void addFreed(std::int64_t bytes);
    // One item gone, with its bytes: freed when deleted, trashed when moved to the Trash.
    void addRemoved(const CleanableItem& item, RemovalMode mode, std::int64_t bytes);
};

// The report's first line, with the item noun the screen uses ("item"/"items",
// "file"/"files"): "Moved 1 file (231 MB) to the Trash." for what went to the Trash, "Deleted
// 2 files, 1.2 GB freed." for what was deleted, both when a run did both, then how many
// failed.
QString cleanSummary(const CleanReport& report, QStringView one, QStringView many);

} // namespace tarvik
