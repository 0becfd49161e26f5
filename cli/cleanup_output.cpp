#include "cli/cleanup_output.h"

#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/path_display.h"
#include "core/platform/xdg_paths.h"
#include "core/shell/preferences.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <cstdio>
#include <iostream>
#include <string>
#include <unistd.h>

namespace tarvik::cli {

bool confirmOnTerminal(const QString& question) {
    if (::isatty(STDIN_FILENO) != 1) {
        return false;
    }
    std::fputs((question + QStringLiteral(" [y/N] ")).toUtf8().constData(), stdout);
    std::fflush(stdout);
    std::string answer;
    if (!std::getline(std::cin, answer)) {
        return false;
    }
    return answer == "y" || answer == "Y" || answer == "yes" || answer == "Yes";
}

QString needsConfirmation() {
    return QStringLiteral("Nothing was removed: removing needs your confirmation. Run this in a "
                          "terminal to be asked, or pass --yes.");
}

void printCleanReport(const CleanReport& report, RemovalMode mode, const QString& home) {
    const auto count = report.removed.size();
    printLine(QStringLiteral("%1 %2 %3, %4 freed%5.")
                  .arg(mode == RemovalMode::MoveToTrash ? QStringLiteral("Moved")
                                                        : QStringLiteral("Removed"))
                  .arg(count)
                  .arg(count == 1 ? QStringLiteral("item") : QStringLiteral("items"))
                  .arg(PathDisplay::bytes(report.freedBytes))
                  .arg(mode == RemovalMode::MoveToTrash
                           ? QStringLiteral(" once the Trash is emptied")
                           : QString()));
    for (const auto& f : report.failures) {
        printLine(QStringLiteral("  not removed: %1 — %2")
                      .arg(PathDisplay::abbreviate(f.item.path, home), f.message));
    }
}

QJsonObject cleanReportJson(const CleanReport& report) {
    QJsonArray removed;
    for (const auto& item : report.removed) {
        removed.append(item.path);
    }
    QJsonArray failures;
    for (const auto& f : report.failures) {
        failures.append(QJsonObject{{QStringLiteral("path"), f.item.path},
                                    {QStringLiteral("message"), f.message}});
    }
    return {{QStringLiteral("freedBytes"), static_cast<double>(report.freedBytes)},
            {QStringLiteral("removed"), removed},
            {QStringLiteral("failures"), failures}};
}

void addRemovalOptions(CLI::App* command, RemovalOptions& options, const char* modeSetting) {
    command->add_option("--mode", options.mode,
                        std::string("moveToTrash or deletePermanently (default: the ") +
                            modeSetting + " setting)");
    command->add_flag("--yes", options.yes, "Do not ask for confirmation");
    command->add_flag("--json", options.json, "Print the report as JSON");
}

std::optional<RemovalMode> chosenMode(const RemovalOptions& options,
                                      std::string_view preferenceKey) {
    if (options.mode.empty()) {
        return removalModePreference(Preferences(), preferenceKey);
    }
    const auto mode = removalModeFromRaw(options.mode);
    if (!mode) {
        printError(QStringLiteral("--mode takes moveToTrash or deletePermanently."));
    }
    return mode;
}

int confirmAndClean(const std::vector<CleanupGroup>& groups, RemovalMode mode,
                    const QString& source, const RemovalOptions& options,
                    const QString& extraWarning) {
    std::size_t count = 0;
    std::int64_t total = 0;
    for (const auto& g : groups) {
        count += g.items.size();
        for (const auto& item : g.items) {
            total += item.size;
        }
    }
    if (!options.yes) {
        const QString question =
            QStringLiteral("%1 %2 %3 (%4)?%5")
                .arg(title(mode))
                .arg(count)
                .arg(count == 1 ? QStringLiteral("item") : QStringLiteral("items"))
                .arg(PathDisplay::bytes(total))
                .arg(extraWarning.isEmpty() ? QString() : QLatin1Char(' ') + extraWarning);
        if (!confirmOnTerminal(question)) {
            printError(needsConfirmation());
            return kExitUsage;
        }
    }
    const Cleaner cleaner(SafetyGuard::forCurrentUser());
    FreeSpaceTimeline timeline(FreeSpaceTimeline::defaultFilePath());
    const CleanReport report = runCleanup(cleaner, groups, source, {}, nullptr, &timeline);
    if (options.json) {
        printJson(QJsonDocument(cleanReportJson(report)));
    } else {
        printCleanReport(report, mode, xdg::home());
    }
    return report.failures.empty() ? kExitOk : kExitFailed;
}

} // namespace tarvik::cli
