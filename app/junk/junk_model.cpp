#include "app/junk/junk_model.h"

#include "core/cleanup/cleanup_record.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"

#include <algorithm>

namespace tarvik {

JunkModel::Dependencies JunkModel::forCurrentUser(const Preferences& preferences) {
    return {[&preferences] { return CapabilitySettings::junkScanner(preferences); },
            [] { return Cleaner(SafetyGuard::forCurrentUser()); },
            FreeSpaceTimeline::defaultFilePath()};
}

JunkModel::JunkModel(Preferences& preferences, Dependencies dependencies, QObject* parent)
    : CleanupModel(preferences,
                   {dependencies.scannerOptions().home, std::move(dependencies.cleaner),
                    std::move(dependencies.timelinePath)},
                   QStringLiteral("System Junk"), parent),
      scannerOptionsFor_(std::move(dependencies.scannerOptions)),
      scan_(
          this, [this](const Results& soFar) { take(soFar); },
          [this](Results all) {
              take(std::move(all));
              scanEnded(scan_.wasCancelled());
          }) {}

JunkModel::~JunkModel() = default;

const JunkScanResult* JunkModel::resultFor(JunkCategory category) const {
    for (const auto& r : results_) {
        if (r.category == category) {
            return &r;
        }
    }
    return nullptr;
}

void JunkModel::take(std::vector<JunkScanResult> results) {
    for (const auto& r : results) {
        if (resultFor(r.category) == nullptr && info(r.category).selectedByDefault) {
            for (const auto& i : r.items) {
                selected_.insert(i.id());
            }
        }
    }
    results_ = std::move(results);
    if (isScanning()) {
        emit scanProgress(QStringLiteral("Looking for junk"), static_cast<qint64>(results_.size()),
                          static_cast<qint64>(kAllJunkCategories.size()));
    }
    emit resultsChanged();
    emit selectionChanged();
}

bool JunkModel::isCategorySelected(JunkCategory category) const {
    const JunkScanResult* r = resultFor(category);
    return r != nullptr && !r->items.empty() &&
           std::all_of(r->items.begin(), r->items.end(),
                       [this](const CleanableItem& i) { return selected_.contains(i.id()); });
}

void JunkModel::setCategorySelected(JunkCategory category, bool on) {
    if (const JunkScanResult* r = resultFor(category)) {
        for (const auto& i : r->items) {
            if (on) {
                selected_.insert(i.id());
            } else {
                selected_.remove(i.id());
            }
        }
        emit selectionChanged();
    }
}

void JunkModel::setItemSelected(const QString& itemId, bool on) {
    if (on) {
        selected_.insert(itemId);
    } else {
        selected_.remove(itemId);
    }
    emit selectionChanged();
}

int JunkModel::selectedCount() const {
    int n = 0;
    for (const auto& r : results_) {
        for (const auto& i : r.items) {
            n += selected_.contains(i.id()) ? 1 : 0;
        }
    }
    return n;
}

std::int64_t JunkModel::selectedSize() const {
    std::int64_t n = 0;
    for (const auto& r : results_) {
        for (const auto& i : r.items) {
            n += selected_.contains(i.id()) ? i.size : 0;
        }
    }
    return n;
}

RemovalMode JunkModel::removalMode() const {
    return CapabilitySettings::removalMode(preferences(), pref::kJunkRemovalMode);
}

std::vector<CleanupGroup> JunkModel::chosenGroups() const {
    std::vector<JunkScanResult> chosen;
    for (const auto& r : results_) {
        JunkScanResult c{r.category, {}, 0};
        for (const auto& i : r.items) {
            if (selected_.contains(i.id())) {
                c.items.push_back(i);
            }
        }
        chosen.push_back(std::move(c));
    }
    return junkCleanupGroups(chosen, removalMode());
}

void JunkModel::scan() {
    if (isBusy()) {
        return;
    }
    results_.clear();
    selected_.clear();
    options_ = scannerOptionsFor_();
    scanStarting(options_.home);
    emit resultsChanged();
    emit selectionChanged();
    scan_.start([options = options_](JobContext<Results>& job) mutable {
        options.cancel = job.cancelFlag();
        Results soFar;
        // Each category reaches the screen soon after it is complete.
        JunkScanner(options).scan({kAllJunkCategories.begin(), kAllJunkCategories.end()},
                                  [&](const JunkScanResult& result) {
                                      soFar.push_back(result);
                                      job.report(soFar);
                                  });
        return soFar;
    });
}

void JunkModel::dropRemoved(const QSet<QString>& removedIds) {
    // Removed items leave their categories; the totals follow.
    for (auto& r : results_) {
        std::erase_if(r.items, [&](const CleanableItem& i) { return removedIds.contains(i.id()); });
        r.totalSize = 0;
        for (const auto& i : r.items) {
            r.totalSize += i.size;
        }
    }
    selected_.subtract(removedIds);
    emit resultsChanged();
}

} // namespace tarvik
