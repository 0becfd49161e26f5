#include "cli/cleanup_output.h"
#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/cleaner.h"
#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/directory_sizer.h"
#include "core/cleanup/path_display.h"
#include "core/platform/directory_handle.h"
#include "core/platform/file_names.h"
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
    QStringList starts;
    const DirectorySizer sizer;
    for (const auto& p : o.paths) {
        // As typed: "", "." and ".." are the guard's to refuse, never turned into a folder.
        const QString path = pathArgument(p);
        items.push_back({path, sizer.size(path), std::nullopt, std::nullopt});
        // A path named here may lie on a disk mounted below home: removals may start from
        // that mount's top, and still never cross another mount inside what they remove.
        const QString parent = SafetyGuard::canonical(path).section(QLatin1Char('/'), 0, -2);
        starts << fileName::decode(mountTopOf(fileName::encode(parent.isEmpty() ? "/" : parent)));
    }
    return confirmAndClean({{items, *mode}}, QStringLiteral("Command Line"), o.removal, {}, starts);
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
