#include "core/homebrew/brew_service.h"

#include "core/homebrew/brew_parsing.h"

namespace tarvik::BrewCommands {
namespace {

QString kindFlag(BrewPackageKind kind) {
    return kind == BrewPackageKind::Cask ? QStringLiteral("--cask") : QStringLiteral("--formula");
}

} // namespace

QStringList installed() {
    return {"info", "--json=v2", "--installed"};
}

QStringList outdated(bool greedy) {
    QStringList a{"outdated", "--json=v2"};
    if (greedy) {
        a << "--greedy";
    }
    return a;
}

QStringList services() {
    return {"services", "list", "--json"};
}
QStringList update() {
    return {"update"};
}
QStringList doctor() {
    return {"doctor"};
}

QStringList upgrade(const QStringList& formulae, const QStringList& casks, bool greedy) {
    QStringList a{"upgrade"};
    if (greedy) {
        a << "--greedy";
    }
    if (!formulae.isEmpty() && casks.isEmpty()) {
        a << "--formula";
    } else if (formulae.isEmpty() && !casks.isEmpty()) {
        a << "--cask";
    }
    return a + formulae + casks;
}

QStringList install(const QString& name, BrewPackageKind kind) {
    return {"install", kindFlag(kind), name};
}

QStringList uninstall(const QString& name, BrewPackageKind kind, bool force) {
    QStringList a{"uninstall", kindFlag(kind)};
    if (force) {
        a << "--ignore-dependencies";
    }
    return a << name;
}

QStringList unpin(const QString& name) {
    return {"unpin", name};
}
QStringList cleanupPreview() {
    return {"cleanup", "-n", "--prune=all"};
}
QStringList orphanPreview() {
    return {"autoremove", "-n"};
}
QStringList cleanup() {
    return {"cleanup", "--prune=all"};
}
QStringList removeOrphans(const QStringList& names) {
    return QStringList{"uninstall", "--formula"} + names;
}

QStringList search(const QString& query) {
    return {"search", query};
}

} // namespace tarvik::BrewCommands

namespace tarvik {

BrewSnapshot loadBrewSnapshot(BrewRunner& runner, bool includeGreedy) {
    // brew failing to list is a list that can't be read, in the same words as one that is no
    // JSON; a hang or a cancel keeps its own.
    const auto listed = [&runner](const QStringList& arguments) {
        try {
            return runner.json(arguments);
        } catch (const BrewError& e) {
            if (e.kind == BrewError::Kind::Failed) {
                throw BrewParseError{};
            }
            throw;
        }
    };
    auto installed = BrewParsing::parseInstalled(listed(BrewCommands::installed()));
    const auto outdated = BrewParsing::parseOutdated(listed(BrewCommands::outdated(includeGreedy)));
    QMap<QString, BrewServiceState> services;
    try {
        services = BrewParsing::parseServices(runner.json(BrewCommands::services()));
    } catch (const BrewError&) {
        // No services command (or it failed): the list stands without service states.
    } catch (const BrewParseError&) {
    }
    return BrewSnapshot::merge(std::move(installed), outdated, services);
}

} // namespace tarvik
