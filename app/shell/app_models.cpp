#include "app/shell/app_models.h"

#include "core/cleanup/cleanup_record.h"
#include "core/platform/xdg_paths.h"

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
            nullptr};
}

AppModels::AppModels(const Options& options, QObject* parent)
    : QObject(parent), preferences_(options.preferencesFile),
      monitor_(preferences_, options.sampler), navigator_(),
      loginItem_(options.autostartDir, options.executable),
      overview_(
          options.summary,
          (options.junk ? *options.junk : JunkModel::forCurrentUser(preferences_)).scannerOptions),
      junk_(preferences_, options.junk ? *options.junk : JunkModel::forCurrentUser(preferences_)),
      brew_(preferences_,
            options.brewRunner ? options.brewRunner : std::make_shared<BrewRunner>()) {
    if (!options.timelinePath.isEmpty()) {
        freeSpace_ =
            std::make_unique<FreeSpaceRecorder>(options.summary.homePath, options.timelinePath);
    }
    // Counters moved while the machine slept: the next rates start afresh.
    connect(&sleep_, &SleepWatcher::resumed, &monitor_, &SystemMonitorModel::resetBaselines);
}

} // namespace tarvik
