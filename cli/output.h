#pragma once

#include <QJsonDocument>
#include <QString>
#include <utility>
#include <vector>

namespace tarvik::cli {

bool stdoutIsTerminal();
void printLine(const QString& text);
void printError(const QString& text);
void printJson(const QJsonDocument& document);
// Two columns, the labels padded to the widest one.
void printRows(const std::vector<std::pair<QString, QString>>& rows);

} // namespace tarvik::cli
