#include "cli/output.h"

#include "core/sys/file_names.h"
#include "core/sys/file_paths.h"
#include "core/text/path_display.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <unistd.h>

namespace tarvik::cli {

bool stdoutIsTerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

void printLine(const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    std::fwrite(utf8.constData(), 1, static_cast<std::size_t>(utf8.size()), stdout);
    std::fputc('\n', stdout);
}

void printError(const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    std::fprintf(stderr, "tarvik: %s\n", utf8.constData());
}

void printJson(const QJsonDocument& document) {
    const QByteArray out = document.toJson(QJsonDocument::Indented);
    std::fwrite(out.constData(), 1, static_cast<std::size_t>(out.size()), stdout);
}

QString pathArgument(const std::string& raw) {
    const QString path = fileName::decode(raw);
    return path.isEmpty() ? path : filePath::absolute(path);
}

QString shownPath(const QString& path, const QString& home) {
    return fileName::display(PathDisplay::abbreviate(path, home));
}

Confirmation confirmOnTerminal(const QString& question) {
    if (::isatty(STDIN_FILENO) != 1) {
        return Confirmation::NoTerminal;
    }
    std::fputs((question + QStringLiteral(" [y/N] ")).toUtf8().constData(), stdout);
    std::fflush(stdout);
    std::string answer;
    if (!std::getline(std::cin, answer)) {
        return Confirmation::Declined;
    }
    return answer == "y" || answer == "Y" || answer == "yes" || answer == "Yes"
               ? Confirmation::Given
               : Confirmation::Declined;
}

QString notConfirmed(Confirmation c, const QString& nothingDone, const QString& doing) {
    if (c == Confirmation::Declined) {
        return nothingDone + QLatin1Char('.');
    }
    return QStringLiteral("%1: %2 needs your confirmation. Run this in a terminal to be asked, or "
                          "pass --yes.")
        .arg(nothingDone, doing);
}

void printRows(const std::vector<std::pair<QString, QString>>& rows) {
    qsizetype width = 0;
    for (const auto& [label, value] : rows) {
        width = std::max(width, label.size());
    }
    for (const auto& [label, value] : rows) {
        printLine(label.leftJustified(width + 2) + value);
    }
}

} // namespace tarvik::cli
