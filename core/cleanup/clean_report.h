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
    std::int64_t freedBytes = 0;
    std::vector<CleanableItem> removed; // in removal order
    std::vector<CleanFailure> failures; // in order of occurrence
    // How each removed item went (beside `removed`), and the part of `freedBytes` that went to
    // the Trash: one run can both delete (Trash contents) and move to the Trash.
    std::vector<RemovalMode> removedModes;
    std::int64_t trashedBytes = 0;

    QSet<QString> removedIDs() const;
    int removedCount(RemovalMode mode) const;
    void merge(const CleanReport& other);
    // Adds freed bytes; a sum past 2^63 cannot come from real disks and is a fatal error.
    void addFreed(std::int64_t bytes);
    // One item gone, with the bytes that freed.
    void addRemoved(const CleanableItem& item, RemovalMode mode, std::int64_t bytes);
};

// The report's first line, with the item noun the screen uses ("item"/"items",
// "file"/"files"): deleted and trashed items each in their own words.
QString cleanSummary(const CleanReport& report, const QString& one, const QString& many);

} // namespace tarvik
