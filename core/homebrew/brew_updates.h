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
// Searches Homebrew's catalogue. Finding nothing is an empty answer (brew says so with exit status
// 1); any other failure throws BrewError, so it never reads as "nothing matches".
BrewSearchResult searchBrew(class BrewRunner& runner, const QString& query);

} // namespace tarvik
