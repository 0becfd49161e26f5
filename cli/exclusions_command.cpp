#include "cli/commands.h"
#include "cli/output.h"
#include "core/cleanup/exclusion_list.h"
#include "core/settings/preferences.h"
#include "core/sys/xdg_paths.h"

#include <QDir>
#include <memory>

namespace tarvik::cli {
namespace {

QString normalise(const std::string& raw) {
    const QString home = xdg::home();
    QString p = QString::fromStdString(raw);
    if (p == QLatin1String("~") || p.startsWith(QLatin1String("~/"))) {
        p = home + p.mid(1);
    }
    return QDir::cleanPath(QDir::current().absoluteFilePath(p));
}

int list() {
    const Preferences prefs;
    const QStringList paths = prefs.exclusions();
    if (paths.isEmpty()) {
        printLine(QStringLiteral("No exclusions yet"));
    }
    for (const QString& p : paths) {
        printLine(p);
    }
    return kExitOk;
}

int add(const std::string& raw) {
    Preferences prefs;
    QStringList paths = prefs.exclusions();
    const QString p = normalise(raw);
    if (!paths.contains(p)) {
        paths << p;
        prefs.setExclusions(paths);
    }
    return prefs.sync() ? kExitOk : kExitFailed;
}

int remove(const std::string& raw) {
    Preferences prefs;
    QStringList paths = prefs.exclusions();
    const QString p = normalise(raw);
    if (!paths.removeAll(p)) {
        printError(QStringLiteral("%1 is not excluded.").arg(p));
        return kExitUsage;
    }
    prefs.setExclusions(paths);
    return prefs.sync() ? kExitOk : kExitFailed;
}

} // namespace

void addExclusionsCommand(CLI::App& app, CommandResult& result) {
    auto* cmd = app.add_subcommand("exclusions", "Locations that scans never offer for cleaning");
    cmd->require_subcommand(1);
    auto path = std::make_shared<std::string>();
    cmd->add_subcommand("list", "Show the excluded locations")->callback([&result] {
        result.run = [] {
            return list();
        };
    });
    auto* addCmd = cmd->add_subcommand("add", "Exclude a location");
    addCmd->add_option("path", *path, "A folder or file")->required();
    addCmd->callback([path, &result] {
        result.run = [path] {
            return add(*path);
        };
    });
    auto* removeCmd = cmd->add_subcommand("remove", "Stop excluding a location");
    removeCmd->add_option("path", *path, "A folder or file")->required();
    removeCmd->callback([path, &result] {
        result.run = [path] {
            return remove(*path);
        };
    });
}

} // namespace tarvik::cli
