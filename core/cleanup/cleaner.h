#pragma once

#include "core/cleanup/clean_report.h"
#include "core/cleanup/removal_mode.h"
#include "core/cleanup/safety_guard.h"
#include "core/cleanup/trash.h"

#include <atomic>
#include <functional>
#include <vector>

namespace tarvik {

using RemovalProgress = std::function<void(int done, int total)>;

// The one removal path of every cleanup screen and of `tarvik clean`. Each item is checked by
// the guard immediately before it is removed, then removed relative to a handle of its parent
// folder without following links, so a path swapped for a link after the check cannot send
// the removal anywhere else.
class Cleaner {
public:
    explicit Cleaner(SafetyGuard guard, Trash trash = Trash::forCurrentUser());

    CleanReport remove(const std::vector<CleanableItem>& items, RemovalMode mode,
                       const RemovalProgress& onProgress = {},
                       const std::atomic<bool>* cancel = nullptr) const;

    const SafetyGuard& guard() const { return guard_; }

private:
    void removeOne(const CleanableItem& item, RemovalMode mode, CleanReport& report,
                   const std::atomic<bool>* cancel) const;

    SafetyGuard guard_;
    Trash trash_;
};

} // namespace tarvik
