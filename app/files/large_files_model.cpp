#include "app/files/large_files_model.h"

#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"

#include <algorithm>

namespace tarvik {

LargeFilesModel::LargeFilesModel(Preferences& preferences, Dependencies dependencies,
                                 QObject* parent)
    : CleanupModel(preferences, std::move(dependencies), QStringLiteral("Large & Old Files"),
                   parent),
      scan_(
          this,
          [this](std::int64_t entries) {
              emit scanProgress(QStringLiteral("Looking for files"), entries, 0);
          },
          [this](std::vector<FoundFile> found) {
              // A cancelled walk still returns the files it had seen: they are real and listed.
              results_ = std::move(found);
              scanEnded(scan_.wasCancelled());
              emit resultsChanged();
              emit selectionChanged();
          }) {}

LargeFilesModel::~LargeFilesModel() = default;

RemovalMode LargeFilesModel::removalMode() const {
    return CapabilitySettings::removalMode(preferences(), pref::kFileRemovalMode);
}

int LargeFilesModel::count(FileKind kind) const {
    return static_cast<int>(std::count_if(results_.begin(), results_.end(),
                                          [kind](const FoundFile& f) { return f.kind == kind; }));
}

void LargeFilesModel::setSelected(const QString& path, bool on) {
    if (on == selected_.contains(path)) {
        return;
    }
    if (on) {
        selected_.insert(path);
    } else {
        selected_.remove(path);
    }
    emit selectionChanged();
}

void LargeFilesModel::setAllSelected(bool on) {
    selected_.clear();
    if (on) {
        for (const auto& f : results_) {
            selected_.insert(f.item.id());
        }
    }
    emit selectionChanged();
}

int LargeFilesModel::selectedCount() const {
    return static_cast<int>(selected_.size());
}

std::int64_t LargeFilesModel::selectedSize() const {
    std::int64_t n = 0;
    for (const auto& f : results_) {
        n += selected_.contains(f.item.id()) ? f.item.size : 0;
    }
    return n;
}

std::int64_t LargeFilesModel::totalSize() const {
    std::int64_t n = 0;
    for (const auto& f : results_) {
        n += f.item.size;
    }
    return n;
}

void LargeFilesModel::scan(LargeFileScanner::Options options) {
    if (isBusy()) {
        return;
    }
    if (options.root.isEmpty()) {
        options.root = home();
    }
    lastOptions_ = options;
    results_.clear();
    selected_.clear();
    scanStarting(options.root);
    emit resultsChanged();
    emit selectionChanged();
    options.excluded = exclusions().forMatching();
    scan_.start([options, home = home()](JobContext<std::int64_t>& job) {
        return LargeFileScanner(home).scan(
            options, [&job](std::int64_t entries) { job.report(entries); }, job.cancelFlag());
    });
}

std::vector<CleanupGroup> LargeFilesModel::chosenGroups() const {
    CleanupGroup group{{}, removalMode()};
    for (const auto& f : results_) {
        if (selected_.contains(f.item.id())) {
            group.items.push_back(f.item);
        }
    }
    return {group};
}

void LargeFilesModel::dropRemoved(const QSet<QString>& removedIds) {
    std::erase_if(results_, [&](const FoundFile& f) { return removedIds.contains(f.item.id()); });
    selected_.subtract(removedIds);
    emit resultsChanged();
}

} // namespace tarvik
