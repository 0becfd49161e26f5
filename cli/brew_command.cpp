#include "cli/commands.h"
#include "cli/output.h"
#include "core/homebrew/brew_askpass.h"
#include "core/homebrew/brew_log.h"
#include "core/homebrew/brew_parsing.h"
#include "core/homebrew/brew_service.h"
#include "core/homebrew/brew_updates.h"
#include "core/settings/preferences.h"
#include "core/sys/xdg_paths.h"
#include "core/text/counts.h"
#include "core/text/path_display.h"
#include "core/text/whole_number.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <csignal>
#include <cstdio>
#include <memory>

namespace tarvik::cli {
namespace {

struct BrewOptions {
    bool json = false;
    bool greedy = false;
    bool cask = false;
    bool force = false;
    bool dryRun = false;
    bool yes = false;
    std::vector<std::string> names;
    std::string name;
};

BrewRunner* activeRunner = nullptr;

void interrupt(int) {
    if (activeRunner != nullptr) {
        activeRunner->cancel(); // brew stops as at Ctrl-C; the report follows
    }
}

QString kindText(BrewPackageKind k) {
    return k == BrewPackageKind::Cask ? QStringLiteral("cask") : QStringLiteral("formula");
}

int reportError(const BrewError& e) {
    printError(e.message());
    return kExitFailed;
}

// Waits while another brew holds Homebrew's locks, saying who.
void waitWhileBusy(BrewRunner& runner) {
    const BrewEnvironment env = runner.resolve();
    bool said = false;
    while (const auto busy = BrewRunner::isBusyElsewhere(env)) {
        if (!said) {
            printError(QStringLiteral("Homebrew is busy: %1 (process %2, running for %3). Waiting "
                                      "for it to finish…")
                           .arg(busy->command)
                           .arg(busy->pid)
                           .arg(busy->elapsed));
            said = true;
        }
        QThread::sleep(2);
    }
}

// Runs a brew command with its live log: colours on a terminal, and a progress line for
// upgrades and installs.
int runWithLog(BrewRunner& runner, const QStringList& args, const QString& displayName,
               const QMap<QString, QString>& extra = {}) {
    const bool tty = stdoutIsTerminal();
    BrewProgressTracker tracker;
    QStringList log;
    std::uint64_t id = 0;
    activeRunner = &runner;
    std::signal(SIGINT, interrupt);
    BrewRunner::Result result;
    try {
        result = runner.run(args, false, extra, [&](const QString& raw) {
            const BrewLogLine line = BrewLogParser::parse(raw, ++id);
            log << line.text;
            const auto update = tracker.feed(line.text);
            if (tty && update && !line.text.startsWith(QLatin1String("==> ")) && update->percent) {
                return; // progress bars redraw in place below instead of filling the log
            }
            QString shown = line.text;
            if (tty) {
                const char* colour = line.marker == BrewLogLine::Marker::Critical ? "\x1b[31m"
                                     : line.marker == BrewLogLine::Marker::Watch  ? "\x1b[33m"
                                     : line.marker == BrewLogLine::Marker::Good   ? "\x1b[32m"
                                     : line.style == BrewLogLine::Style::Heading  ? "\x1b[1m"
                                     : line.style == BrewLogLine::Style::Dim      ? "\x1b[2m"
                                                                                  : "";
                shown = QLatin1String(colour) + shown + (*colour != '\0' ? "\x1b[0m" : "");
                std::fputs("\r\x1b[2K", stdout);
            }
            printLine(shown);
            if (tty && tracker.current().phase) {
                const auto& c = tracker.current();
                std::fprintf(stdout, "%s%s%s\r",
                             BrewProgressTracker::rawValue(*c.phase).toUtf8().constData(),
                             c.package ? (" " + c.package->toStdString()).c_str() : "",
                             c.percent ? QStringLiteral(" %1%")
                                             .arg(roundedNumber<int>(*c.percent * 100))
                                             .toUtf8()
                                             .constData()
                                       : "");
                std::fflush(stdout);
            }
        });
    } catch (const BrewError& e) {
        std::signal(SIGINT, SIG_DFL);
        activeRunner = nullptr;
        return reportError(e);
    }
    std::signal(SIGINT, SIG_DFL);
    activeRunner = nullptr;
    if (tty) {
        std::fputs("\r\x1b[2K", stdout);
    }
    if (!result.succeeded()) {
        const BrewFailure f = BrewFailure::explain(displayName, displayName, log);
        printError(f.message + QLatin1Char('.'));
        return kExitFailed;
    }
    return kExitOk;
}

QJsonObject packageJson(const BrewPackage& p) {
    QJsonObject o{{"name", p.id},
                  {"kind", kindText(p.kind)},
                  {"displayName", p.displayName},
                  {"installedVersion", p.installedVersion},
                  {"onRequest", p.onRequest},
                  {"pinned", p.pinned},
                  {"outdated", p.isOutdated()},
                  {"dependencies", QJsonArray::fromStringList(p.dependencies)},
                  {"dependents", QJsonArray::fromStringList(p.dependents)}};
    if (p.latestVersion) {
        o["latestVersion"] = *p.latestVersion;
    }
    if (p.desc) {
        o["desc"] = *p.desc;
    }
    if (p.size) {
        o["size"] = static_cast<double>(*p.size);
    }
    return o;
}

int run(const std::string& action, const BrewOptions& o) {
    BrewRunner runner;
    const Preferences prefs;
    const bool greedy = o.greedy || prefs.value(pref::kHomebrewIncludeGreedy).toBool();
    try {
        if (action == "status") {
            waitWhileBusy(runner);
            const BrewEnvironment env = runner.resolve();
            const BrewSnapshot s = loadBrewSnapshot(runner, greedy);
            const auto updated = lastBrewUpdate(env);
            if (o.json) {
                printJson(QJsonDocument(QJsonObject{
                    {"brew", env.brewPath},
                    {"prefix", env.prefix},
                    {"version", env.version},
                    {"formulae", s.formulaeCount()},
                    {"casks", s.casksCount()},
                    {"outdated", static_cast<int>(s.outdated().size())},
                    {"pinned", static_cast<int>(s.pinned().size())},
                    {"lastUpdate", updated ? QJsonValue(updated->toUTC().toString(Qt::ISODate))
                                           : QJsonValue(QJsonValue::Null)}}));
                return kExitOk;
            }
            printRows({{"Homebrew", env.version + QStringLiteral(" at ") + env.prefix},
                       {"Installed", QStringLiteral("%1, %2 (%3 on request)")
                                         .arg(countOf(s.formulaeCount(), u"formula", u"formulae"),
                                              countOf(s.casksCount(), u"cask", u"casks"))
                                         .arg(s.onRequestCount())},
                       {"Outdated", QString::number(s.outdated().size())},
                       {"Pinned", QString::number(s.pinned().size())},
                       {"Lists updated",
                        updated ? updated->toString(Qt::ISODate) : QStringLiteral("Unknown")}});
            return kExitOk;
        }
        if (action == "list" || action == "outdated") {
            waitWhileBusy(runner);
            BrewSnapshot s = loadBrewSnapshot(runner, greedy);
            std::vector<BrewPackage> shown = action == "list" ? s.packages : s.outdated();
            if (o.json) {
                QJsonArray out;
                for (const auto& p : shown) {
                    out.append(packageJson(p));
                }
                printJson(QJsonDocument(out));
                return kExitOk;
            }
            std::vector<std::pair<QString, QString>> rows;
            for (const auto& p : shown) {
                QString v = BrewVersion::display(p.installedVersion);
                if (p.latestVersion) {
                    v += QStringLiteral(" → ") + BrewVersion::display(*p.latestVersion) +
                         (p.isMajorJump() ? QStringLiteral(" (major)") : QString()) +
                         (p.pinned ? QStringLiteral(" (pinned)") : QString());
                }
                rows.emplace_back(p.id, kindText(p.kind).leftJustified(8) + v);
            }
            if (rows.empty()) {
                printLine(action == "list" ? QStringLiteral("Nothing is installed.")
                                           : QStringLiteral("Everything is up to date."));
            }
            printRows(rows);
            return kExitOk;
        }
        if (action == "upgrade") {
            waitWhileBusy(runner);
            QStringList formulae;
            QStringList casks;
            if (!o.names.empty()) {
                const BrewSnapshot s = loadBrewSnapshot(runner, greedy);
                for (const auto& n : o.names) {
                    const QString name = QString::fromStdString(n);
                    const auto it =
                        std::find_if(s.packages.begin(), s.packages.end(),
                                     [&](const BrewPackage& p) { return p.id == name; });
                    if (it == s.packages.end()) {
                        printError(QStringLiteral("%1 is not installed.").arg(name));
                        return kExitUsage;
                    }
                    (it->kind == BrewPackageKind::Cask ? casks : formulae) << name;
                }
            }
            return runWithLog(runner, BrewCommands::upgrade(formulae, casks, greedy),
                              o.names.size() == 1 ? QString::fromStdString(o.names.front())
                                                  : QStringLiteral("the packages"));
        }
        const QString name = QString::fromStdString(o.name);
        const BrewPackageKind kind = o.cask ? BrewPackageKind::Cask : BrewPackageKind::Formula;
        if (action == "install") {
            waitWhileBusy(runner);
            return runWithLog(runner, BrewCommands::install(name, kind), name);
        }
        if (action == "uninstall") {
            if (!o.yes) {
                const Confirmation c = confirmOnTerminal(
                    o.force ? QStringLiteral("Uninstall %1 even if other packages depend on it?")
                                  .arg(name)
                            : QStringLiteral("Uninstall %1?").arg(name));
                if (c != Confirmation::Given) {
                    printError(notConfirmed(c, QStringLiteral("Nothing was uninstalled"),
                                            QStringLiteral("uninstalling")));
                    return kExitUsage;
                }
            }
            waitWhileBusy(runner);
            // Removing what runs as root needs a way to ask for the password.
            return runWithLog(runner, BrewCommands::uninstall(name, kind, o.force), name,
                              BrewAskpass::environment(BrewAskpass::defaultSupportDirectory()));
        }
        if (action == "cleanup") {
            waitWhileBusy(runner);
            return runWithLog(runner,
                              o.dryRun ? BrewCommands::cleanupPreview() : BrewCommands::cleanup(),
                              QStringLiteral("Homebrew"));
        }
        if (action == "search") {
            const BrewSearchResult found = searchBrew(runner, name);
            if (o.json) {
                printJson(QJsonDocument(
                    QJsonObject{{"formulae", QJsonArray::fromStringList(found.formulae)},
                                {"casks", QJsonArray::fromStringList(found.casks)}}));
                return kExitOk;
            }
            if (found.formulae.isEmpty() && found.casks.isEmpty()) {
                printLine(QStringLiteral("Nothing in Homebrew matches “%1”.").arg(name));
                return kExitOk;
            }
            for (const auto& f : found.formulae) {
                printLine(f);
            }
            for (const auto& c : found.casks) {
                printLine(c + QStringLiteral(" (cask: tarvik brew install --cask ") + c +
                          QLatin1Char(')'));
            }
            return kExitOk;
        }
        if (action == "doctor") {
            return runWithLog(runner, BrewCommands::doctor(), QStringLiteral("Homebrew"));
        }
    } catch (const BrewError& e) {
        return reportError(e);
    } catch (const BrewParseError& e) {
        printError(e.message);
        return kExitFailed;
    }
    return kExitUsage;
}

} // namespace

void addBrewCommand(CLI::App& app, CommandResult& result) {
    auto o = std::make_shared<BrewOptions>();
    auto* cmd = app.add_subcommand("brew", "Manage Homebrew packages");
    cmd->require_subcommand(1);
    auto add = [&](const char* name, const char* help) {
        auto* sub = cmd->add_subcommand(name, help);
        sub->callback([o, &result, action = std::string(name)] {
            result.run = [o, action] {
                return run(action, *o);
            };
        });
        return sub;
    };
    auto* status = add("status", "Show Homebrew's version and what is installed and outdated");
    status->add_flag("--json", o->json, "Print JSON for scripts");
    auto* list = add("list", "List installed formulae and casks");
    list->add_flag("--json", o->json, "Print JSON for scripts");
    list->add_flag("--greedy", o->greedy, "Also mark casks that update themselves as outdated");
    auto* outdated = add("outdated", "List what can be upgraded");
    outdated->add_flag("--json", o->json, "Print JSON for scripts");
    outdated->add_flag("--greedy", o->greedy, "Include casks that update themselves");
    auto* upgrade = add("upgrade", "Upgrade everything, or the named packages");
    upgrade->add_option("names", o->names, "Packages to upgrade");
    upgrade->add_flag("--greedy", o->greedy, "Include casks that update themselves");
    auto* install = add("install", "Install a formula (or a cask with --cask)");
    install->add_option("name", o->name, "The package")->required();
    install->add_flag("--cask", o->cask, "It is a cask");
    auto* uninstall = add("uninstall", "Uninstall a formula (or a cask with --cask)");
    uninstall->add_option("name", o->name, "The package")->required();
    uninstall->add_flag("--cask", o->cask, "It is a cask");
    uninstall->add_flag("--force", o->force, "Also when other packages depend on it");
    uninstall->add_flag("--yes", o->yes, "Do not ask for confirmation");
    auto* cleanup = add("cleanup", "Remove old versions and caches");
    cleanup->add_flag("--dry-run", o->dryRun, "Only show what would be removed");
    add("doctor", "Check Homebrew for problems");
    auto* search = add("search", "Search Homebrew's catalogue");
    search->add_option("query", o->name, "Words or a /regex/")->required();
    search->add_flag("--json", o->json, "Print JSON for scripts");
}

} // namespace tarvik::cli
