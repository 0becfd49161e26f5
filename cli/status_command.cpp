#include "cli/commands.h"
#include "cli/output.h"
#include "core/monitor/machine_summary.h"
#include "core/platform/xdg_paths.h"

#include <QJsonDocument>
#include <memory>

namespace tarvik::cli {

int printStatus(bool asJson) {
    const MachineSummary summary = readMachineSummary({"/", xdg::home()});
    if (asJson) {
        printJson(QJsonDocument(toJson(summary)));
        return kExitOk;
    }
    std::vector<std::pair<QString, QString>> rows;
    for (const auto& row : describe(summary)) {
        rows.emplace_back(row.label, row.value);
    }
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
