#pragma once

#include "core/cleanup/clean_report.h"
#include "core/cleanup/removal_mode.h"

#include <QJsonObject>

namespace tarvik::cli {

// Asks on the terminal; without one (a script, a pipe) there is nobody to ask: false.
bool confirmOnTerminal(const QString& question);
// The sentence that explains a refusal to act without confirmation.
QString needsConfirmation();

void printCleanReport(const CleanReport& report, RemovalMode mode, const QString& home);
QJsonObject cleanReportJson(const CleanReport& report);
// The "--mode" option's value; empty when it is not one of the two raw values.
std::optional<RemovalMode> parseModeOption(const std::string& raw);

} // namespace tarvik::cli
