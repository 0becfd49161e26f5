#pragma once

#include "core/cleanup/cleaner.h"

#include <functional>

namespace tarvik {

class FreeSpaceTimeline;

struct CleanupGroup {
    std::vector<CleanableItem> items;
    RemovalMode mode;
};

// Removes the groups one after another, each with its own mode, reporting progress as a
// fraction of all items. When deleting freed at least one byte, the cleanup is recorded in the
// timeline (if given) with what was deleted, and the timeline saved.
CleanReport runCleanup(const Cleaner& cleaner, const std::vector<CleanupGroup>& groups,
                       const QString& source, const std::function<void(double)>& onProgress,
                       const std::atomic<bool>* cancel, FreeSpaceTimeline* timeline);

} // namespace tarvik
