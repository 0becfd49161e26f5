#include "app/cleanup/cleanup_model.h"

#include "core/cleanup/cleanup_record.h"
#include "core/settings/capability_settings.h"
#include "core/sys/xdg_paths.h"

namespace tarvik {

CleanupModel::Dependencies CleanupModel::forCurrentUser() {
    return {xdg::home(), [] { return Cleaner(SafetyGuard::forCurrentUser()); },
            FreeSpaceTimeline::defaultFilePath()};
}

CleanupModel::CleanupModel(Preferences& preferences, Dependencies dependencies, QString source,
                           QObject* parent)
    : QObject(parent), prefs_(preferences), deps_(std::move(dependencies)),
      source_(std::move(source)), removal_(
                                      this, [this](double f) { emit removeProgress(f); },
                                      [this](CleanReport report) {
                                          report_ = std::move(report);
                                          dropRemoved(report_->removedIDs());
                                          emit removeFinished();
                                          emit selectionChanged();
                                      }) {}

ExclusionList CleanupModel::exclusions() const {
    return CapabilitySettings::exclusions(prefs_, deps_.home);
}

void CleanupModel::scanStarting(const QString& root) {
    root_ = root;
    scanning_ = true;
    cancelled_ = false;
    report_.reset();
    emit scanStarted();
}

void CleanupModel::scanEnded(bool cancelled) {
    scanning_ = false;
    scanned_ = true;
    cancelled_ = cancelled;
    emit scanFinished();
}

void CleanupModel::cancel() {
    if (scanning_) {
        cancelScan();
    }
    removal_.cancel();
}

void CleanupModel::removeSelected() {
    std::vector<CleanupGroup> groups = chosenGroups();
    std::erase_if(groups, [](const CleanupGroup& g) { return g.items.empty(); });
    if (isBusy() || groups.empty()) {
        return;
    }
    report_.reset();
    // The exclusions as they are now (an unreadable list stops every removal with its reason),
    // and the searched folder, which may be a disk of its own.
    const Cleaner cleaner = deps_.cleaner()
                                .withExclusions(exclusions())
                                .startingAlsoAt(root_.isEmpty() ? deps_.home : root_);
    removal_.start([groups = std::move(groups), cleaner, source = source_,
                    path = deps_.timelinePath](JobContext<double>& job) {
        std::optional<FreeSpaceTimeline> timeline;
        if (!path.isEmpty()) {
            timeline.emplace(path);
        }
        return runCleanup(
            cleaner, groups, source, [&job](double f) { job.report(f); }, job.cancelFlag(),
            timeline ? &*timeline : nullptr);
    });
    emit selectionChanged();
}

} // namespace tarvik
