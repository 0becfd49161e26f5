#pragma once

#include "core/cleanup/cleanable_item.h"

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

    QSet<QString> removedIDs() const;
    void merge(const CleanReport& other);
    // Adds freed bytes; a sum past 2^63 cannot come from real disks and is a fatal error.
    void addFreed(std::int64_t bytes);
};

} // namespace tarvik
