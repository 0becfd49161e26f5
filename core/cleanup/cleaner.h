#pragma once

#include "core/cleanup/clean_report.h"
#include "core/cleanup/exclusion_list.h"
#include "core/cleanup/removal_mode.h"
#include "core/cleanup/safety_guard.h"
#include "core/cleanup/trash.h"

#include <QStringList>
#include <atomic>
#include <functional>
#include <vector>

namespace tarvik {

using RemovalProgress = std::function<void(int done, int total)>;

// The one removal path of every cleanup screen and of `tarvik clean`. Each item is judged by
// the guard immediately before it is removed, its canonical path worked out once; then the
// very object judged is reached from a handle of the allowed root (or of a mounted search
// root below it) with the kernel refusing every symbolic link and every mount point on the way,
// and removed relative to the parent handle reached so. A folder swapped for a link at any
// moment cannot send the removal anywhere else. Excluded locations are never removed, not
// even inside an offered folder, and an unknown exclusion list removes nothing.
class Cleaner {
public:
    explicit Cleaner(SafetyGuard guard, Trash trash = Trash::forCurrentUser(),
                     ExclusionList exclusions = {});
    // Also start from `folder` when it is a mount of its own strictly inside an allowed root
    // (a search's root on another disk below home); otherwise it changes nothing.
    Cleaner startingAlsoAt(const QString& folder) const;
    // The same cleaner with the user's exclusions, read when the removal starts.
    Cleaner withExclusions(ExclusionList exclusions) const;

    CleanReport remove(const std::vector<CleanableItem>& items, RemovalMode mode,
                       const RemovalProgress& onProgress = {},
                       const std::atomic<bool>* cancel = nullptr) const;

    const SafetyGuard& guard() const { return guard_; }
    const ExclusionList& exclusions() const { return exclusions_; }

private:
    struct Start;
    std::vector<Start> openStarts() const;
    void removeOne(const CleanableItem& item, RemovalMode mode, const std::vector<Start>& starts,
                   CleanReport& report, const std::atomic<bool>* cancel) const;

    SafetyGuard guard_;
    Trash trash_;
    ExclusionList exclusions_;
    QStringList extraStarts_;
};

} // namespace tarvik
