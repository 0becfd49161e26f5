#pragma once

#include <QJsonDocument>
#include <QString>
#include <string>
#include <utility>
#include <vector>

namespace tarvik::cli {

bool stdoutIsTerminal();
void printLine(const QString& text);
void printError(const QString& text);
void printJson(const QJsonDocument& document);
// A path named on the command line, made absolute (the current folder before a relative one)
// but otherwise as typed, its bytes kept exactly even when they are not UTF-8.
QString pathArgument(const std::string& raw);
// A path as a person reads it: "~" for home, stray bytes as \xNN.
QString shownPath(const QString& path, const QString& home);
// How a question on the terminal was answered.
enum class Confirmation { Given, Declined, NoTerminal };
// Asks a yes/no question on the terminal (no means no, and so does no answer).
Confirmation confirmOnTerminal(const QString& question);
// Why nothing was done: "Nothing was removed." after a no; without a terminal, how to confirm
// (`doing`: "removing", "uninstalling").
QString notConfirmed(Confirmation c, const QString& nothingDone, const QString& doing);
// Two columns, the labels padded to the widest one.
void printRows(const std::vector<std::pair<QString, QString>>& rows);

} // namespace tarvik::cli
