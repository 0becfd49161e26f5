#include "cli/cleanup_output.h"

#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/exclusion_list.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "core/sys/file_names.h"
#include "core/sys/xdg_paths.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"
#include "core/text/qt_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <cstdio>
#include <iostream>
#include <string>
#include <unistd.h>

namespace tarvik::cli {

void printCleanReport(const CleanReport& report, const QString& home) {
    printLine(cleanSummary(report, u"item", u"items"));
    for (const auto& f : report.failures) {
        printLine(
            QStringLiteral("  not removed: %1 — %2").arg(shownPath(f.item.path, home), f.message));
    }
}

QJsonObject cleanReportJson(const CleanReport& report) {
    QJsonArray removed;
    for (std::size_t i = 0; i < report.removed.size(); ++i) {
        removed.append(
            QJsonObject{{QStringLiteral("path"), report.removed[i].path},
                        {QStringLiteral("mode"), toQString(rawValue(report.removedModes[i]))}});
    }
    QJsonArray failures;
    for (const auto& f : report.failures) {
        failures.append(QJsonObject{{QStringLiteral("path"), f.item.path},
                                    {QStringLiteral("message"), f.message}});
    }
    return {{QStringLiteral("freedBytes"), static_cast<double>(report.freedBytes)},
            {QStringLiteral("trashedBytes"), static_cast<double>(report.trashedBytes)},
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
        return CapabilitySettings::removalMode(Preferences(), preferenceKey);
    }
    const auto mode = removalModeFromRaw(options.mode);
    if (!mode) {
        printError(QStringLiteral("--mode takes moveToTrash or deletePermanently."));
    }
    return mode;
}

namespace {

// "Move to Trash 3 items (1.2 MB)", or the item's name when there is one.
QString whatGoes(RemovalMode mode, const std::vector<const CleanableItem*>& items) {
    std::int64_t total = 0;
    for (const CleanableItem* item : items) {
        total += item->size;
    }
    const QString what = items.size() == 1
                             ? QStringLiteral("“%1”").arg(fileName::display(items.front()->name()))
                             : countOf(items.size(), u"item", u"items");
    return QStringLiteral("%1 %2 (%3)").arg(title(mode), what, MetricFormat::bytes(total));
}

} // namespace

int confirmAndClean(const std::vector<CleanupGroup>& groups, const QString& source,
                    const RemovalOptions& options, const QString& extraWarning,
                    const QStringList& starts) {
    const QString home = xdg::home();
    const SafetyGuard guard = SafetyGuard::forCurrentUser();
    if (guard.homeProblem()) {
        printError(guard.homeProblem()->description());
        return kExitFailed;
    }
    ExclusionList exclusions = CapabilitySettings::exclusions(Preferences(), home);
    if (exclusions.error()) {
        printError(*exclusions.error());
        return kExitFailed;
    }
    if (!options.yes) {
        QStringList parts;
        for (const RemovalMode mode : kAllRemovalModes) {
            std::vector<const CleanableItem*> items;
            for (const auto& g : groups) {
                if (g.mode == mode) {
                    for (const auto& item : g.items) {
                        items.push_back(&item);
                    }
                }
            }
            if (!items.empty()) {
                parts << whatGoes(mode, items);
            }
        }
        QString question = parts.join(QStringLiteral(" and "));
        for (int i = 1; i < parts.size(); ++i) {
            // "Delete permanently … and move to Trash …": one sentence, one capital.
            const qsizetype at = question.indexOf(parts[i]);
            question[at] = question[at].toLower();
        }
        question += QLatin1Char('?');
        if (!extraWarning.isEmpty()) {
            question += QLatin1Char(' ') + extraWarning;
        }
        if (const Confirmation c = confirmOnTerminal(question); c != Confirmation::Given) {
            printError(
                notConfirmed(c, QStringLiteral("Nothing was removed"), QStringLiteral("removing")));
            return kExitUsage;
        }
    }
    Cleaner cleaner(guard, Trash::forCurrentUser(), std::move(exclusions));
    for (const QString& start : starts) {
        cleaner = cleaner.startingAlsoAt(start);
    }
    FreeSpaceTimeline timeline(FreeSpaceTimeline::defaultFilePath());
    const CleanReport report = runCleanup(cleaner, groups, source, {}, nullptr, &timeline);
    if (options.json) {
        printJson(QJsonDocument(cleanReportJson(report)));
    } else {
        printCleanReport(report, home);
    }
    return report.failures.empty() ? kExitOk : kExitFailed;
}

} // namespace tarvik::cli
