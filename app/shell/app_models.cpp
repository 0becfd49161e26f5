#include "app/shell/app_models.h"

#include "core/cleanup/cleanup_record.h"
#include "core/settings/capability_settings.h"
#include "core/sys/xdg_paths.h"

#include <QCoreApplication>

namespace tarvik {

AppModels::Options AppModels::defaultOptions() {
    return {Preferences::defaultFilePath(),
            xdg::autostartDir(),
            QCoreApplication::applicationFilePath(),
            {"/", xdg::home()},
            {},
            std::nullopt,
            FreeSpaceTimeline::defaultFilePath(),
            nullptr,
            std::nullopt,
            QStringLiteral("/dev/input")};
}

AppModels::AppModels(const Options& options, QObject* parent)
    : QObject(parent), preferences_(options.preferencesFile),
      monitor_(preferences_, options.sampler), navigator_(),
      loginItem_(options.autostartDir, options.executable),
      junk_(preferences_, options.junk ? *options.junk : JunkModel::forCurrentUser(preferences_)),
      overview_(options.summary, &junk_),
      brewRunner_(options.brewRunner ? options.brewRunner : std::make_shared<BrewRunner>()),
      brew_(preferences_, brewRunner_), brewUpdates_(preferences_, brewRunner_),
      speedTest_(
          [this] {
              SpeedTestConfiguration c;
              c.baseURL = preferences_.speedTestBaseURL(); // tests and mirrors point it elsewhere
              return c;
          },
          SpeedTestHistoryStore(options.timelinePath.isEmpty()
                                    ? QString()
                                    : SpeedTestHistoryStore::defaultFilePath())),
      agents_(preferences_), keepAwake_(options.keepAwakeBuses.value_or(KeepAwakeBuses{})),
      keyboardLock_(options.inputDir),
      dockFolders_(options.dockPaths.value_or(DockPaths::current())) {
    // A fresh list knows how many packages are outdated as well as the periodic check does.
    connect(&brew_, &BrewModel::changed, this, [this] {
        if (brew_.snapshot() && !brew_.isLoading()) {
            brewUpdates_.setOutdatedCount(static_cast<int>(brew_.snapshot()->outdated().size()));
        }
    });
    if (!options.timelinePath.isEmpty()) {
        freeSpace_ =
            std::make_unique<FreeSpaceRecorder>(options.summary.homePath, options.timelinePath);
    }
    wireKeepAwake();
    // Counters moved while the machine slept: the next rates start afresh.
    connect(&sleep_, &SleepWatcher::resumed, &monitor_, &SystemMonitorModel::resetBaselines);
}

void AppModels::wireKeepAwake() {
    // The controller keeps no settings: it is told them, and what the person edits is stored,
    // which tells it again (as an edit with `tarvik awake schedules` does).
    const auto loadSchedules = [this] {
        auto stored = CapabilitySettings::schedules(preferences_);
        keepAwake_.setSchedules(std::move(stored.schedules), stored.error);
    };
    const auto loadLid = [this] {
        keepAwake_.setKeepsRunningWithLidClosed(
            preferences_.value(pref::kKeepAwakeLidClosed).toBool());
    };
    loadSchedules();
    loadLid();
    connect(&preferences_, &Preferences::changed, this,
            [loadSchedules, loadLid](const QString& key) {
                if (key == QLatin1String(pref::kKeepAwakeSchedules)) {
                    loadSchedules();
                } else if (key == QLatin1String(pref::kKeepAwakeLidClosed)) {
                    loadLid();
                }
            });
    connect(&keepAwake_, &KeepAwakeController::schedulesEdited, this,
            [this](const std::vector<KeepAwakeSchedule>& schedules) {
                CapabilitySettings::storeSchedules(preferences_, schedules);
            });
    connect(&keepAwake_, &KeepAwakeController::lidOptionEdited, this, [this](bool on) {
        preferences_.setValue(pref::kKeepAwakeLidClosed, on);
        preferences_.sync();
    });
}

} // namespace tarvik
