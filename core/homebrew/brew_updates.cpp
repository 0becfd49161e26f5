#include "core/homebrew/brew_updates.h"

#include "core/homebrew/brew_log.h"
#include "core/homebrew/brew_runner.h"
#include "core/homebrew/brew_service.h"

namespace tarvik {

bool isUpdateCheckDue(const std::optional<QDateTime>& lastCheck, const QDateTime& now,
                      double intervalSeconds) {
    if (!(intervalSeconds > 0)) {
        return false;
    }
    if (!lastCheck || !lastCheck->isValid() || *lastCheck > now) {
        return true;
    }
    return static_cast<double>(lastCheck->secsTo(now)) >= intervalSeconds;
}

BrewSearchResult parseBrewSearch(const QString& output) {
    BrewSearchResult r;
    QStringList* into = &r.formulae; // without headings, brew lists formulae
    for (const QString& raw : output.split(QLatin1Char('\n'))) {
        const QString line = BrewLogParser::stripANSI(raw).trimmed();
        if (line.startsWith(QLatin1String("==> Formulae"))) {
            into = &r.formulae;
        } else if (line.startsWith(QLatin1String("==> Casks"))) {
            into = &r.casks;
        } else if (!line.isEmpty() && !line.startsWith(QLatin1String("==>")) &&
                   !line.startsWith(QLatin1String("Warning:")) &&
                   !line.startsWith(QLatin1String("Error:")) && !line.contains(QLatin1Char(' '))) {
            *into << line.section(QLatin1Char(' '), 0, 0);
        }
    }
    return r;
}

BrewSearchResult searchBrew(BrewRunner& runner, const QString& query) {
    const BrewRunner::Result r = runner.answer(BrewCommands::search(query));
    if (!r.succeeded() && !r.output.contains(QLatin1String("No formulae or casks found"))) {
        throw BrewError{BrewError::Kind::Failed, r.code};
    }
    return parseBrewSearch(r.output);
}

} // namespace tarvik
