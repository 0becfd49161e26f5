#pragma once

#include "core/homebrew/brew_runner.h"

#include <QStringList>

namespace tarvik {

enum class BrewPackageKind { Formula, Cask };

// Every brew command line the program uses, in one place.
namespace BrewCommands {
QStringList installed();
QStringList outdated(bool greedy);
QStringList services();
QStringList update();
QStringList doctor();
QStringList upgrade(const QStringList& formulae, const QStringList& casks, bool greedy);
QStringList install(const QString& name, BrewPackageKind kind);
QStringList uninstall(const QString& name, BrewPackageKind kind, bool force);
QStringList unpin(const QString& name);
QStringList cleanupPreview();
QStringList orphanPreview();
QStringList cleanup();
QStringList removeOrphans(const QStringList& names);
QStringList search(const QString& query);
} // namespace BrewCommands

struct BrewSnapshot;

// Loads what is installed: the installed list, then what is outdated (with --greedy when
// asked), then the services, merged. A failing installed or outdated command ends the load
// (BrewError or BrewParseError); failing services only leave every service unknown.
BrewSnapshot loadBrewSnapshot(BrewRunner& runner, bool includeGreedy);

} // namespace tarvik
