#include "cli/commands.h"
#include "cli/output.h"
#include "core/settings/preferences.h"
#include "core/sys/desktop_apps.h"
#include "core/text/counts.h"
#include "dock/dock_apps_codec.h"
#include "dock/dock_folders.h"
#include "dock/dock_layout.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QSet>
#include <memory>

namespace tarvik::cli {
namespace {

struct DockOptions {
    bool json = false;
    bool yes = false;
    bool small = false;
    std::string name;
    std::vector<std::string> apps;
    std::string after;
    int position = 0;
    std::string backup;
    bool all = false;
    bool list = false;
};

QString text(const std::string& s) {
    return QString::fromStdString(s);
}

// What a tile is, in words: an app's name, a folder's name, or a kind of space.
QString describeTile(const QString& tile, const std::vector<AppFolder>& folders) {
    if (const auto spacer = DockSpacers::kindOf(tile)) {
        return DockSpacers::title(*spacer);
    }
    if (DockAppsCodec::isFolderTile(tile)) {
        for (const AppFolder& f : folders) {
            if (f.launcherId() == tile) {
                return QStringLiteral("%1 (folder)").arg(f.name);
            }
        }
        return QStringLiteral("A deleted folder");
    }
    const auto app = DesktopApps::find(tile);
    return app ? app->name : QStringLiteral("%1 (not installed)").arg(tile);
}

// The dock's change, one line per tile that came or went.
void printChange(const QStringList& before, const QStringList& after,
                 const std::vector<AppFolder>& folders) {
    const QSet<QString> was(before.begin(), before.end());
    const QSet<QString> is(after.begin(), after.end());
    int lines = 0;
    for (const QString& tile : after) {
        if (!was.contains(tile)) {
            printLine(QStringLiteral("  + %1").arg(describeTile(tile, folders)));
            ++lines;
        }
    }
    for (const QString& tile : before) {
        if (!is.contains(tile)) {
            printLine(QStringLiteral("  − %1").arg(describeTile(tile, folders)));
            ++lines;
        }
    }
    if (lines == 0 && before != after) {
        printLine(QStringLiteral("  The dock's order changed."));
    }
}

bool dockAvailable() {
    if (const auto why = DockPreferences::unavailableReason()) {
        printError(*why);
        return false;
    }
    return true;
}

// Yes with --yes, else asks on the terminal; prints why not when it doesn't go ahead.
bool confirmed(const DockOptions& o, const QString& question) {
    if (o.yes) {
        return true;
    }
    const Confirmation c = confirmOnTerminal(question);
    if (c != Confirmation::Given) {
        printError(notConfirmed(c, QStringLiteral("The dock was not changed"),
                                QStringLiteral("changing the dock")));
        return false;
    }
    return true;
}

// An app named on the command line: its desktop-file id (with or without ".desktop") or its
// name as launchers show it.
std::optional<DesktopApp> resolveApp(const QString& wanted, const std::vector<DesktopApp>& all,
                                     QString* error) {
    for (const QString& id : {wanted, wanted + QStringLiteral(".desktop")}) {
        if (auto app = DesktopApps::find(id)) {
            return app;
        }
    }
    std::vector<DesktopApp> named;
    for (const DesktopApp& app : all) {
        if (app.name.compare(wanted, Qt::CaseInsensitive) == 0) {
            named.push_back(app);
        }
    }
    if (named.size() == 1) {
        return named.front();
    }
    if (named.empty()) {
        *error = QStringLiteral("No installed app is called “%1”. Give its name as the "
                                "applications list shows it, or its desktop-file id.")
                     .arg(wanted);
    } else {
        QStringList ids;
        for (const DesktopApp& app : named) {
            ids.append(app.id);
        }
        *error = QStringLiteral("Several apps are called “%1”: name one by its id (%2).")
                     .arg(wanted, ids.join(QStringLiteral(", ")));
    }
    return std::nullopt;
}

DockFoldersOptions applyOptions(bool rebuildAll) {
    const Preferences prefs;
    return {prefs.dockFoldersHideGroupedApps(), prefs.dockFoldersShowIndicators(), rebuildAll};
}

// `named` tells the tiles' folders apart in the report, deleted ones included.
int applyFolders(const DockFolders& dock, const std::vector<AppFolder>& folders,
                 const std::vector<AppFolder>& named, bool rebuildAll = false) {
    try {
        const DockFoldersReport report = dock.apply(folders, applyOptions(rebuildAll));
        if (!report.built.isEmpty()) {
            printLine(QStringLiteral("Rebuilt %1.")
                          .arg(countOf(report.built.size(), u"folder", u"folders")));
        }
        if (report.dockChanged()) {
            printLine(QStringLiteral("The dock changed:"));
            printChange(report.before, report.after, named);
            printLine(QStringLiteral("The previous list is backed up (tarvik dock restore puts it "
                                     "back)."));
        } else {
            printLine(QStringLiteral("The dock already shows the folders as they are."));
        }
        for (const QString& problem : report.problems) {
            printError(problem);
        }
        return report.problems.isEmpty() ? kExitOk : kExitFailed;
    } catch (const DockPreferencesError& e) {
        printError(e.message);
        return kExitFailed;
    }
}

int listDock(const DockOptions& o) {
    if (!dockAvailable()) {
        return kExitFailed;
    }
    const QStringList tiles = DockPreferences().tiles();
    const auto folders = DockFolderStore(DockFolderStore::defaultSupportDirectory()).load();
    if (o.json) {
        QJsonArray rows;
        for (const QString& tile : tiles) {
            const auto spacer = DockSpacers::kindOf(tile);
            const QString kind = spacer                              ? DockSpacers::id(*spacer)
                                 : DockAppsCodec::isFolderTile(tile) ? QStringLiteral("folder")
                                                                     : QStringLiteral("app");
            rows.append(QJsonObject{{QStringLiteral("id"), tile},
                                    {QStringLiteral("kind"), kind},
                                    {QStringLiteral("title"), describeTile(tile, folders)}});
        }
        printJson(QJsonDocument(rows));
        return kExitOk;
    }
    if (tiles.isEmpty()) {
        printLine(DockLayout::emptyTitle() + QStringLiteral(". ") + DockLayout::emptyDetail() +
                  QLatin1Char('.'));
        return kExitOk;
    }
    std::vector<std::pair<QString, QString>> rows;
    for (qsizetype i = 0; i < tiles.size(); ++i) {
        rows.emplace_back(QString::number(i + 1), describeTile(tiles[i], folders));
    }
    printRows(rows);
    return kExitOk;
}

int listFolders(const DockOptions& o) {
    const auto folders = DockFolderStore(DockFolderStore::defaultSupportDirectory()).load();
    const QStringList tiles = DockPreferences().tiles();
    if (o.json) {
        QJsonArray list;
        for (const AppFolder& f : folders) {
            QJsonArray apps;
            for (const AppEntry& app : f.apps) {
                apps.append(QJsonObject{
                    {QStringLiteral("name"), app.name},
                    {QStringLiteral("id"), app.reference()},
                    {QStringLiteral("installed"), DesktopApps::find(app.reference()).has_value()}});
            }
            list.append(QJsonObject{{QStringLiteral("id"), f.id.toString(QUuid::WithoutBraces)},
                                    {QStringLiteral("name"), f.name},
                                    {QStringLiteral("showInDock"), f.showInDock},
                                    {QStringLiteral("inDock"), tiles.contains(f.launcherId())},
                                    {QStringLiteral("apps"), apps}});
        }
        printJson(QJsonDocument(list));
        return kExitOk;
    }
    if (folders.empty()) {
        printLine(QStringLiteral("No dock folders yet. Make one with `tarvik dock folders create "
                                 "NAME APP…`."));
        return kExitOk;
    }
    for (const AppFolder& f : folders) {
        QStringList apps;
        for (const AppEntry& app : f.apps) {
            apps.append(DesktopApps::find(app.reference())
                            ? app.name
                            : QStringLiteral("%1 (not installed)").arg(app.name));
        }
        printLine(
            QStringLiteral("%1%2: %3")
                .arg(f.name,
                     tiles.contains(f.launcherId()) ? QString()
                                                    : QStringLiteral(" (not in the dock)"),
                     apps.isEmpty() ? QStringLiteral("empty") : apps.join(QStringLiteral(", "))));
    }
    return kExitOk;
}

int createFolder(const DockOptions& o) {
    if (!dockAvailable()) {
        return kExitFailed;
    }
    const QString name = text(o.name).trimmed();
    if (name.isEmpty()) {
        printError(QStringLiteral("A folder needs a name."));
        return kExitUsage;
    }
    const auto installed = DesktopApps::installed();
    AppFolder folder;
    folder.id = QUuid::createUuid();
    folder.name = name;
    QSet<QString> seen;
    for (const std::string& raw : o.apps) {
        QString error;
        const auto app = resolveApp(text(raw), installed, &error);
        if (!app) {
            printError(error);
            return kExitUsage;
        }
        if (!seen.contains(app->id)) {
            seen.insert(app->id);
            folder.apps.push_back({app->name, app->path, app->id});
        }
    }
    const DockFolders dock;
    std::vector<AppFolder> folders = dock.store().load();
    QStringList names;
    for (const AppEntry& app : folder.apps) {
        names.append(app.name);
    }
    if (!confirmed(o, QStringLiteral("Make the folder “%1” of %2 and put it in the dock?")
                          .arg(name, names.join(QStringLiteral(", "))))) {
        return kExitUsage;
    }
    folders.push_back(std::move(folder));
    return applyFolders(dock, folders, folders);
}

int removeFolder(const DockOptions& o) {
    if (!dockAvailable()) {
        return kExitFailed;
    }
    const DockFolders dock;
    std::vector<AppFolder> folders = dock.store().load();
    const QString wanted = text(o.name);
    std::vector<std::size_t> matches;
    for (std::size_t i = 0; i < folders.size(); ++i) {
        if (folders[i].name == wanted ||
            folders[i].id.toString(QUuid::WithoutBraces).compare(wanted, Qt::CaseInsensitive) ==
                0) {
            matches.push_back(i);
        }
    }
    if (matches.empty()) {
        printError(QStringLiteral("There is no dock folder “%1” (tarvik dock folders list shows "
                                  "them).")
                       .arg(wanted));
        return kExitUsage;
    }
    if (matches.size() > 1) {
        QStringList ids;
        for (std::size_t i : matches) {
            ids.append(folders[i].id.toString(QUuid::WithoutBraces));
        }
        printError(QStringLiteral("Several folders are called “%1”: name one by its id (%2).")
                       .arg(wanted, ids.join(QStringLiteral(", "))));
        return kExitUsage;
    }
    if (!confirmed(o, QStringLiteral("Remove the folder “%1” from the dock? Its apps stay "
                                     "installed.")
                          .arg(folders[matches.front()].name))) {
        return kExitUsage;
    }
    const std::vector<AppFolder> before = folders;
    folders.erase(folders.begin() + static_cast<std::ptrdiff_t>(matches.front()));
    return applyFolders(dock, folders, before);
}

int applyStoredFolders(const DockOptions& o) {
    if (!dockAvailable()) {
        return kExitFailed;
    }
    const DockFolders dock;
    const auto folders = dock.store().load();
    const QString which = o.all ? QStringLiteral("every dock folder")
                                : QStringLiteral("the dock folders that changed");
    if (!confirmed(o, QStringLiteral("Rebuild %1 and update the dock?").arg(which))) {
        return kExitUsage;
    }
    return applyFolders(dock, folders, folders, o.all);
}

int applyLayout(DockLayout& layout, const DockOptions& o, const QString& question) {
    const QStringList before = DockPreferences().tiles();
    if (!confirmed(o, question)) {
        return kExitUsage;
    }
    if (!layout.apply()) {
        printError(layout.errorMessage().value_or(QString()));
        return kExitFailed;
    }
    printLine(QStringLiteral("The dock changed:"));
    printChange(before, layout.tiles(),
                DockFolderStore(DockFolderStore::defaultSupportDirectory()).load());
    return kExitOk;
}

int addSpacer(const DockOptions& o) {
    if (!dockAvailable()) {
        return kExitFailed;
    }
    DockLayout layout;
    layout.reload();
    const QString after = text(o.after);
    const auto& rows = layout.rows();
    auto found = std::find_if(rows.begin(), rows.end(), [&](const DockLayout::Row& r) {
        return r.tile == after || r.tile == after + QStringLiteral(".desktop") ||
               r.title.compare(after, Qt::CaseInsensitive) == 0;
    });
    if (found == rows.end()) {
        printError(
            QStringLiteral("“%1” is not in the dock (tarvik dock list shows what is).").arg(after));
        return kExitUsage;
    }
    const DockSpacer kind = o.small ? DockSpacer::Small : DockSpacer::Regular;
    const QString title = found->title;
    layout.addSpacer(kind, found->id);
    return applyLayout(layout, o,
                       QStringLiteral("Add a %1 after %2 in the dock?")
                           .arg(DockSpacers::title(kind).toLower(), title));
}

int removeSpacer(const DockOptions& o) {
    if (!dockAvailable()) {
        return kExitFailed;
    }
    DockLayout layout;
    layout.reload();
    const auto& rows = layout.rows();
    if (o.position < 1 || o.position > static_cast<int>(rows.size()) ||
        !rows[static_cast<std::size_t>(o.position - 1)].spacer) {
        printError(QStringLiteral("Tile %1 is not a space: give a space's number as tarvik dock "
                                  "list shows it.")
                       .arg(o.position));
        return kExitUsage;
    }
    layout.removeSpacer(rows[static_cast<std::size_t>(o.position - 1)].id);
    return applyLayout(layout, o,
                       QStringLiteral("Remove the space at %1 from the dock?").arg(o.position));
}

int restoreBackup(const DockOptions& o) {
    if (!dockAvailable()) {
        return kExitFailed;
    }
    const DockFolders dock;
    const auto all = dock.preferences().backups();
    if (o.list) {
        if (all.empty()) {
            printLine(QStringLiteral("No dock backups yet: Tarvik makes one each time it changes "
                                     "the dock."));
        }
        std::vector<std::pair<QString, QString>> rows;
        for (std::size_t i = 0; i < all.size(); ++i) {
            rows.emplace_back(
                QString::number(i + 1),
                QStringLiteral("%1, %2  %3")
                    .arg(QLocale().toString(all[i].taken.toLocalTime(), QLocale::ShortFormat),
                         countOf(all[i].tiles.size(), u"tile", u"tiles"), all[i].path));
        }
        printRows(rows);
        return kExitOk;
    }
    std::optional<DockBackup> backup;
    bool isNumber = false;
    const int number = text(o.backup).toInt(&isNumber);
    if (o.backup.empty() || isNumber) {
        // 1 is the newest, as --list numbers them.
        const int index = o.backup.empty() ? 1 : number;
        if (all.empty()) {
            printError(QStringLiteral("There are no dock backups yet: Tarvik makes one each time "
                                      "it changes the dock."));
            return kExitFailed;
        }
        if (index < 1 || index > static_cast<int>(all.size())) {
            printError(QStringLiteral("There is no backup %1: tarvik dock restore --list shows "
                                      "the %2.")
                           .arg(index)
                           .arg(countOf(all.size(), u"backup", u"backups")));
            return kExitUsage;
        }
        backup = all[static_cast<std::size_t>(index - 1)];
    } else {
        backup = DockPreferences::readBackup(pathArgument(o.backup));
        if (!backup) {
            printError(QStringLiteral("%1 is not a dock backup.").arg(text(o.backup)));
            return kExitUsage;
        }
    }
    const QStringList before = dock.preferences().tiles();
    const auto folders = dock.store().load();
    const QString when = backup->taken.isValid()
                             ? QLocale().toString(backup->taken.toLocalTime(), QLocale::ShortFormat)
                             : backup->path;
    if (!confirmed(o, QStringLiteral("Put back the dock as it was on %1 (%2 tiles)?")
                          .arg(when)
                          .arg(backup->tiles.size()))) {
        return kExitUsage;
    }
    try {
        dock.restore(*backup);
    } catch (const DockPreferencesError& e) {
        printError(e.message);
        return kExitFailed;
    }
    printLine(QStringLiteral("The dock changed:"));
    printChange(before, backup->tiles, folders);
    return kExitOk;
}

} // namespace

void addDockCommand(CLI::App& app, CommandResult& result) {
    auto o = std::make_shared<DockOptions>();
    auto* dock = app.add_subcommand("dock", "The dock: folders of apps and spaces between tiles "
                                            "(GNOME's dash, Ubuntu Dock, Dash to Dock)");
    dock->require_subcommand(1);
    const auto on = [&result](CLI::App* command, int (*work)(const DockOptions&),
                              std::shared_ptr<DockOptions> options) {
        command->callback([&result, work, options] {
            result.run = [work, options] {
                return work(*options);
            };
        });
    };

    auto* list = dock->add_subcommand("list", "List the dock's tiles in order");
    list->add_flag("--json", o->json, "Print JSON");
    on(list, listDock, o);

    auto* folders = dock->add_subcommand("folders", "Folders of apps that sit in the dock");
    folders->require_subcommand(1);
    auto* flist = folders->add_subcommand("list", "List the folders and their apps");
    flist->add_flag("--json", o->json, "Print JSON");
    on(flist, listFolders, o);
    auto* create =
        folders->add_subcommand("create", "Make a folder of apps and put it in the dock");
    create->add_option("NAME", o->name, "The folder's name")->required();
    create->add_option("APP", o->apps, "Apps by name or desktop-file id, in grid order")
        ->required();
    create->add_flag("--yes", o->yes, "Do not ask for confirmation");
    on(create, createFolder, o);
    auto* remove = folders->add_subcommand("remove", "Take a folder out of the dock and delete it");
    remove->add_option("NAME", o->name, "The folder's name or id")->required();
    remove->add_flag("--yes", o->yes, "Do not ask for confirmation");
    on(remove, removeFolder, o);
    auto* apply =
        folders->add_subcommand("apply", "Rebuild the folders that changed and update the dock");
    apply->add_flag("--all", o->all, "Rebuild every folder, changed or not (new app icons)");
    apply->add_flag("--yes", o->yes, "Do not ask for confirmation");
    on(apply, applyStoredFolders, o);

    auto* spacer = dock->add_subcommand("spacer", "Blank spaces between dock tiles");
    spacer->require_subcommand(1);
    auto* add = spacer->add_subcommand("add", "Add a space after a tile");
    add->add_option("--after", o->after, "The tile's app name or desktop-file id")->required();
    add->add_flag("--small", o->small, "A small space");
    add->add_flag("--yes", o->yes, "Do not ask for confirmation");
    on(add, addSpacer, o);
    auto* sremove = spacer->add_subcommand("remove", "Remove a space");
    sremove->add_option("N", o->position, "The space's number as `tarvik dock list` shows it")
        ->required();
    sremove->add_flag("--yes", o->yes, "Do not ask for confirmation");
    on(sremove, removeSpacer, o);

    auto* restore = dock->add_subcommand("restore", "Put back the dock from a backup (the newest "
                                                    "without an argument)");
    restore->add_option("BACKUP", o->backup, "A backup's number as --list shows it, or its file");
    restore->add_flag("--list", o->list, "List the backups, newest first");
    restore->add_flag("--yes", o->yes, "Do not ask for confirmation");
    on(restore, restoreBackup, o);
}

} // namespace tarvik::cli
