#include "app/shell/app_models.h"

#include "core/platform/xdg_paths.h"

#include <QCoreApplication>

namespace tarvik {

AppModels::Options AppModels::defaultOptions() {
    return {Preferences::defaultFilePath(),
            xdg::autostartDir(),
            QCoreApplication::applicationFilePath(),
            {"/", xdg::home()}};
}

AppModels::AppModels(const Options& options, QObject* parent)
    : QObject(parent), preferences_(options.preferencesFile), navigator_(),
      loginItem_(options.autostartDir, options.executable), overview_(options.summary) {}

} // namespace tarvik
