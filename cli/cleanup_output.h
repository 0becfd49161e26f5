#pragma once

#include "core/cleanup/clean_report.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/removal_mode.h"

#include <CLI/CLI.hpp>
#include <QJsonObject>
#include <string>
#include <vector>

namespace tarvik::cli {

// Asks on the terminal; without one (a script, a pipe) there is nobody to ask: false.

void printCleanReport(const CleanReport& report, const QString& home);
QJsonObject cleanReportJson(const CleanReport& report);
// The options every removing command shares.
struct RemovalOptions {
    std::string mode;
    bool yes = false;
    bool json = false;
};
void addRemovalOptions(CLI::App* command, RemovalOptions& options, const char* modeSetting);
// The mode from "--mode", else the preference; empty (after saying why) when "--mode" is wrong.
std::optional<RemovalMode> chosenMode(const RemovalOptions& options,
                                      std::string_view preferenceKey);
// Asks (unless --yes), removes through the guard, records the cleanup and prints the report.
// Nothing is removed when the home folder is unusable or the exclusion list can't be read.
// `starts`: folders the search began in, which may be mounts of their own below home.
int confirmAndClean(const std::vector<CleanupGroup>& groups, const QString& source,
                    const RemovalOptions& options, const QString& extraWarning = {},
                    const QStringList& starts = {});

} // namespace tarvik::cli
