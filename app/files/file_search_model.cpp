#include "app/files/file_search_model.h"

#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "core/sys/xdg_paths.h"

#include <QMetaObject>
#include <QtConcurrent/QtConcurrentRun>

namespace tarvik {

FileSearchModel::Dependencies FileSearchModel::forCurrentUser() {
    return {xdg::home(), [] { return Cleaner(SafetyGuard::forCurrentUser()); },
            FreeSpaceTimeline::defaultFilePath()};
}

FileSearchModel::FileSearchModel(Preferences& preferences, Dependencies dependencies,
                                 QObject* parent)
    : QObject(parent), prefs_(preferences), deps_(std::move(dependencies)) {
    connect(&removeWatcher_, &QFutureWatcher<CleanReport>::finished, this, [this] {
        removing_ = false;
        report_ = removeWatcher_.result();
        dropRemoved(report_->removedIDs());
        emit removeFinished();
        emit selectionChanged();
    });
}

FileSearchModel::~FileSearchModel() {
    if (cancel_) {
        *cancel_ = true;
    }
    removeWatcher_.waitForFinished();
}

RemovalMode FileSearchModel::removalMode() const {
    return CapabilitySettings::removalMode(prefs_, pref::kFileRemovalMode);
}

void FileSearchModel::cancel() {
    if (cancel_ && isBusy()) {
        *cancel_ = true;
    }
}

std::shared_ptr<std::atomic<bool>> FileSearchModel::beginScan(const QString& root) {
    root_ = root;
    scanning_ = true;
    cancelled_ = false;
    report_.reset();
    cancel_ = std::make_shared<std::atomic<bool>>(false);
    return cancel_;
}

void FileSearchModel::endScan() {
    scanning_ = false;
    scanned_ = true;
    // Read here, on the interface thread, so a Cancel clicked before this point always counts
    // even when the search had just ended by itself.
    cancelled_ = cancel_ && cancel_->load();
}

ExclusionList FileSearchModel::exclusions() const {
    return CapabilitySettings::exclusions(prefs_, deps_.home);
}

void FileSearchModel::postProgress(const QString& phase, std::int64_t count) {
    // The model outlives its workers (subclasses wait for them), and events still queued
    // when it goes are dropped with it.
    QMetaObject::invokeMethod(
        this, [this, phase, count] { emit scanProgress(phase, count); }, Qt::QueuedConnection);
}

void FileSearchModel::startRemoval(std::vector<CleanableItem> items, const QString& source) {
    if (isBusy() || items.empty()) {
        return;
    }
    removing_ = true;
    report_.reset();
    cancel_ = std::make_shared<std::atomic<bool>>(false);
    const std::vector<CleanupGroup> groups{{std::move(items), removalMode()}};
    // The exclusions as they are now, and the searched folder, which may be a disk of its own.
    const Cleaner cleaner = deps_.cleaner()
                                .withExclusions(exclusions())
                                .startingAlsoAt(root_.isEmpty() ? deps_.home : root_);
    removeWatcher_.setFuture(QtConcurrent::run(
        [this, groups, source, flag = cancel_, cleaner, path = deps_.timelinePath] {
            std::optional<FreeSpaceTimeline> timeline;
            if (!path.isEmpty()) {
                timeline.emplace(path);
            }
            return runCleanup(
                cleaner, groups, source,
                [this](double f) {
                    QMetaObject::invokeMethod(
                        this, [this, f] { emit removeProgress(f); }, Qt::QueuedConnection);
                },
                flag.get(), timeline ? &*timeline : nullptr);
        }));
}

} // namespace tarvik
