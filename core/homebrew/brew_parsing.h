#pragma once

#include "core/homebrew/brew_package.h"

#include <QByteArray>

namespace tarvik {

// The package list could not be read; the sentence the user sees.
struct BrewParseError {
    QString message = QStringLiteral("Couldn't read Homebrew's package list.");
};

// Readers of brew's JSON. A missing key or a value of the wrong type never fails the parse: the
// field takes its default or the one entry is skipped. Bytes that are not JSON throw
// BrewParseError.
namespace BrewParsing {
std::vector<BrewPackage> parseInstalled(const QByteArray& json);
std::vector<BrewOutdated> parseOutdated(const QByteArray& json);
QMap<QString, BrewServiceState> parseServices(const QByteArray& json);
} // namespace BrewParsing

// Fills each package's size on disk: a formula's Cellar folder (all versions), a cask's Caskroom
// folder and the apps it installed.
void measureBrewPackages(std::vector<BrewPackage>& packages, const BrewEnvironment& environment);

// When the package lists were last updated: FETCH_HEAD of homebrew-core's checkout; none for
// installations that read the JSON API instead.
std::optional<QDateTime> lastBrewUpdate(const BrewEnvironment& environment);

} // namespace tarvik
