#include "cli/cleanup_output.h"
#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/cleaner.h"
#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/directory_sizer.h"
#include "core/cleanup/path_display.h"
#include "core/platform/xdg_paths.h"
#include "core/shell/preferences.h"

#include <QDir>
#include <QJsonDocument>
#include <memory>

namespace tarvik::cli {
namespace {

struct CleanOptions {
    std::vector<std::string> paths;
    RemovalOptions removal;
};

int runClean(const CleanOptions& o) {
    const auto mode = chosenMode(o.removal, pref::kFileRemovalMode);
    if (!mode) {
        return kExitUsage;
    }
    std::vector<CleanableItem> items;
    const DirectorySizer sizer;
    for (const auto& p : o.paths) {
        const QString path =
            QDir::cleanPath(QDir::current().absoluteFilePath(QString::fromStdString(p)));
        items.push_back({path, sizer.size(path), std::nullopt, std::nullopt});
    }
    return confirmAndClean({{items, *mode}}, *mode, QStringLiteral("Command Line"), o.removal);
}

} // namespace

void addCleanCommand(CLI::App& app, CommandResult& result) {
    auto o = std::make_shared<CleanOptions>();
    auto* cmd = app.add_subcommand(
        "clean", "Remove files and folders through Tarvik's safety guard (a safe rm for scripts)");
    cmd->add_option("paths", o->paths, "Files or folders to remove")->required();
    addRemovalOptions(cmd, o->removal, "fileRemovalMode");
    cmd->callback([o, &result] {
        result.run = [o] {
            return runClean(*o);
        };
    });
}

} // namespace tarvik::cli
