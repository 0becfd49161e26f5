#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

// Whether the periodic update check is due: never with an interval of 0 or less; at once when
// it never ran (or ran "in the future", after a clock change); else once the interval passed.
bool isUpdateCheckDue(const std::optional<QDateTime>& lastCheck, const QDateTime& now,
                      double intervalSeconds);

// `brew search`'s answer: the formulae and casks it lists under its two headings.
struct BrewSearchResult {
    QStringList formulae;
    QStringList casks;
};
BrewSearchResult parseBrewSearch(const QString& output);

} // namespace tarvik
