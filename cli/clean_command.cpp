#include "cli/cleanup_output.h"
#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/cleaner.h"
#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/directory_sizer.h"
#include "core/settings/preferences.h"
#include "core/sys/xdg_paths.h"
#include "core/text/path_display.h"

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
    const SafetyGuard guard = SafetyGuard::forCurrentUser();
    for (const auto& p : o.paths) {
        // As typed: "", "." and ".." are the guard's to refuse, never turned into a folder.
        const QString path = pathArgument(p);
        // Only what may go is measured: `tarvik clean /` is refused at once, not after a walk.
        items.push_back(
            {path, guard.isAllowed(path) ? sizer.size(path) : 0, std::nullopt, std::nullopt});
    }
    // Removals start only from the allowed roots: a path on a disk mounted below home is
    // refused with the reason, whatever was named.
    return confirmAndClean({{items, *mode}}, QStringLiteral("Command Line"), o.removal);
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
