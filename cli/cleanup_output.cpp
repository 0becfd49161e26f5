#include "cli/cleanup_output.h"

#include "cli/output.h"
#include "core/cleanup/path_display.h"

#include <QJsonArray>
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

std::optional<RemovalMode> parseModeOption(const std::string& raw) {
    return removalModeFromRaw(raw);
}

} // namespace tarvik::cli
