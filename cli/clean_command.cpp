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
    std::string mode;
    bool yes = false;
    bool json = false;
};

int runClean(const CleanOptions& o) {
    const Preferences prefs;
    RemovalMode mode = removalModePreference(prefs, pref::kFileRemovalMode);
    if (!o.mode.empty()) {
        const auto parsed = parseModeOption(o.mode);
        if (!parsed) {
            printError(QStringLiteral("--mode takes moveToTrash or deletePermanently."));
            return kExitUsage;
        }
        mode = *parsed;
    }
    const QString home = xdg::home();
    std::vector<CleanableItem> items;
    std::int64_t total = 0;
    const DirectorySizer sizer;
    for (const auto& p : o.paths) {
        const QString path =
            QDir::cleanPath(QDir::current().absoluteFilePath(QString::fromStdString(p)));
        const std::int64_t size = sizer.size(path);
        items.push_back({path, size, std::nullopt, std::nullopt});
        total += size;
    }
    if (!o.yes) {
        const QString question =
            QStringLiteral("%1 %2 %3 (%4)?")
                .arg(title(mode))
                .arg(items.size())
                .arg(items.size() == 1 ? QStringLiteral("item") : QStringLiteral("items"))
                .arg(PathDisplay::bytes(total));
        if (!confirmOnTerminal(question)) {
            printError(needsConfirmation());
            return kExitUsage;
        }
    }
    const Cleaner cleaner(SafetyGuard::forCurrentUser());
    FreeSpaceTimeline timeline(FreeSpaceTimeline::defaultFilePath());
    const CleanReport report = runCleanup(cleaner, {{items, mode}}, QStringLiteral("Command Line"),
                                          {}, nullptr, &timeline);
    if (o.json) {
        printJson(QJsonDocument(cleanReportJson(report)));
    } else {
        printCleanReport(report, mode, home);
    }
    return report.failures.empty() ? kExitOk : kExitFailed;
}

} // namespace

void addCleanCommand(CLI::App& app, CommandResult& result) {
    auto o = std::make_shared<CleanOptions>();
    auto* cmd = app.add_subcommand(
        "clean", "Remove files and folders through Tarvik's safety guard (a safe rm for scripts)");
    cmd->add_option("paths", o->paths, "Files or folders to remove")->required();
    cmd->add_option("--mode", o->mode,
                    "moveToTrash or deletePermanently (default: the "
                    "fileRemovalMode setting)");
    cmd->add_flag("--yes", o->yes, "Do not ask for confirmation");
    cmd->add_flag("--json", o->json, "Print the report as JSON");
    cmd->callback([o, &result] {
        result.run = [o] {
            return runClean(*o);
        };
    });
}

} // namespace tarvik::cli
