#include "core/cleanup/clean_report.h"

#include <QtGlobal>

namespace tarvik {

QSet<QString> CleanReport::removedIDs() const {
    QSet<QString> ids;
    for (const auto& item : removed) {
        ids.insert(item.id());
    }
    return ids;
}

void CleanReport::addFreed(std::int64_t bytes) {
    if (__builtin_add_overflow(freedBytes, bytes, &freedBytes)) {
        qFatal("Freed byte count overflowed");
    }
}

void CleanReport::merge(const CleanReport& other) {
    addFreed(other.freedBytes);
    removed.insert(removed.end(), other.removed.begin(), other.removed.end());
    failures.insert(failures.end(), other.failures.begin(), other.failures.end());
}

} // namespace tarvik
