#pragma once

#include "core/cleanup/cleanable_item.h"
#include "core/cleanup/exclusion_list.h"
#include "core/cleanup/junk_category.h"
#include "core/cleanup/removal_mode.h"

#include <atomic>
#include <functional>
#include <optional>
#include <vector>

namespace tarvik {

struct JunkScanResult {
    JunkCategory category;
    std::vector<CleanableItem> items; // largest first
    std::int64_t totalSize = 0;
};

// Finds regenerable data in the home folder, category by category. Scans never change
// anything; nothing outside home is looked at.
class JunkScanner {
public:
    struct Options {
        QString home;
        QString downloads = QStringLiteral("Downloads"); // relative to home
        // The home trash's "files", relative to home; empty when the trash lies outside home.
        QString trashFiles = QStringLiteral(".local/share/Trash/files");
        std::optional<ExclusionList> exclusions;
        const std::atomic<bool>* cancel = nullptr;
    };
    explicit JunkScanner(Options options);

    std::vector<JunkScanResult>
    scan(const std::vector<JunkCategory>& categories,
         const std::function<void(const JunkScanResult&)>& onCategory = {}) const;
    std::vector<QString> candidates(const ScanTarget& target) const;

private:
    bool cancelled() const { return options_.cancel != nullptr && options_.cancel->load(); }

    Options options_;
};

// The selected items of a scan, grouped for removal: Trash contents always for good, the rest
// with the user's junk removal mode.
struct CleanupGroup;
std::vector<CleanupGroup> junkCleanupGroups(const std::vector<JunkScanResult>& selected,
                                            RemovalMode junkMode);

} // namespace tarvik
