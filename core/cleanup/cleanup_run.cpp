#include "core/cleanup/cleanup_run.h"

#include "core/cleanup/cleanup_record.h"

namespace tarvik {

CleanReport runCleanup(const Cleaner& cleaner, const std::vector<CleanupGroup>& groups,
                       const QString& source, const std::function<void(double)>& onProgress,
                       const std::atomic<bool>* cancel, FreeSpaceTimeline* timeline) {
    std::size_t total = 0;
    for (const auto& g : groups) {
        total += g.items.size();
    }
    CleanReport merged;
    std::size_t earlier = 0;
    for (const auto& g : groups) {
        const CleanReport part = cleaner.remove(
            g.items, g.mode,
            [&](int done, int) {
                if (onProgress && total > 0) {
                    onProgress(static_cast<double>(earlier + static_cast<std::size_t>(done)) /
                               static_cast<double>(total));
                }
            },
            cancel);
        merged.merge(part);
        earlier += g.items.size();
        if (cancel != nullptr && cancel->load()) {
            break;
        }
    }
    // What went to the Trash is still on the disk: the history holds only what was freed.
    if (merged.freedBytes >= 1 && timeline != nullptr) {
        timeline->record({QDateTime::currentDateTimeUtc(), merged.freedBytes,
                          merged.removedCount(RemovalMode::DeletePermanently), source});
    }
    return merged;
}

} // namespace tarvik
