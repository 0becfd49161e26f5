#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/junk_scanner.h"
#include "core/monitor/machine_summary.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "core/sys/xdg_paths.h"
#include "core/text/metric_format.h"
#include "dock/dock_folders.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <memory>

namespace tarvik::cli {

int printStatus(bool asJson) {
    const MachineSummary summary = readMachineSummary({"/", xdg::home()});
    const Preferences prefs;
    const JunkScanner scanner(CapabilitySettings::junkScanner(prefs));
    std::int64_t junk = 0;
    for (const auto& r : scanner.scan({kAllJunkCategories.begin(), kAllJunkCategories.end()})) {
        if (info(r.category).selectedByDefault) {
            junk += r.totalSize;
        }
    }
    const std::vector<HealthIssue> health = quickHealthIssues();
    const auto awake = keepAwakeHolders();
    const DockFolders dock;
    if (asJson) {
        QJsonObject o = toJson(summary);
        o[QStringLiteral("junkBytes")] = static_cast<double>(junk);
        QJsonArray ids;
        for (const auto& issue : health) {
            ids.append(issue.id);
        }
        o[QStringLiteral("healthIssues")] = ids;
        o[QStringLiteral("keptAwake")] = awake ? QJsonValue(!awake->empty()) : QJsonValue();
        o[QStringLiteral("dockFolders")] = static_cast<double>(dock.store().load().size());
        printJson(QJsonDocument(o));
        return kExitOk;
    }
    std::vector<std::pair<QString, QString>> rows;
    for (const auto& row : describe(summary)) {
        rows.emplace_back(row.label, row.value);
    }
    rows.emplace_back(
        QStringLiteral("Junk"),
        QStringLiteral("%1 can be cleaned (tarvik junk)").arg(MetricFormat::bytes(junk)));
    QStringList titles;
    for (const auto& issue : health) {
        titles << issue.title;
    }
    rows.emplace_back(QStringLiteral("Health"),
                      // A glance has one reading: how busy the CPU has been takes tarvik health's
                      // few seconds, so "nothing" is said for what was looked at.
                      titles.isEmpty()
                          ? QStringLiteral("Nothing at a glance; tarvik health also watches the "
                                           "CPU for a few seconds")
                          : titles.join(QStringLiteral("; ")) + QStringLiteral(" (tarvik health)"));
    if (awake) {
        rows.emplace_back(QStringLiteral("Keep awake"),
                          awake->empty() ? QStringLiteral("Sleeping normally (tarvik awake)")
                                         : QStringLiteral("Kept awake by Tarvik (tarvik awake "
                                                          "status)"));
    }
    rows.emplace_back(QStringLiteral("Dock folders"),
                      dock.summary() + QStringLiteral(" (tarvik dock)"));
    printRows(rows);
    return kExitOk;
}

void addStatusCommand(CLI::App& app, CommandResult& result) {
    auto* cmd = app.add_subcommand("status", "Print a summary of this machine");
    auto json = std::make_shared<bool>(false);
    cmd->add_flag("--json", *json, "Print JSON for scripts");
    cmd->callback([json, &result] {
        result.run = [json] {
            return printStatus(*json);
        };
    });
}

} // namespace tarvik::cli
