#include "dock/dock_folders.h"

#include "core/sys/desktop_apps.h"
#include "core/text/counts.h"
#include "dock/dock_apps_codec.h"
#include "dock/dock_folder_login_agent.h"
#include "dock/dock_spacer.h"
#include "dock/folder_bundle_builder.h"
#include "dock/launcher_entry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QSet>
#include <QThread>
#include <algorithm>
#include <csignal>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

namespace tarvik {
namespace {

constexpr const char* kLinkEntry = "org.pellor.tarvik.links.desktop";

// Resident helpers of this user: processes running our helper with --background.
QList<pid_t> residentHelpers(const QString& helper) {
    QList<pid_t> out;
    const QString canonical = QFileInfo(helper).canonicalFilePath();
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool numeric = false;
        const pid_t pid = name.toInt(&numeric);
        if (!numeric || QFileInfo(QStringLiteral("/proc/") + name).ownerId() != ::getuid()) {
            continue;
        }
        if (QFileInfo(QStringLiteral("/proc/%1/exe").arg(pid)).canonicalFilePath() != canonical) {
            continue;
        }
        QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (cmdline.open(QIODevice::ReadOnly) &&
            cmdline.readAll().split('\0').contains("--background")) {
            out.append(pid);
        }
    }
    return out;
}

} // namespace

DockFolders::DockFolders(DockPaths paths, DockFolderStore store, DockPreferences preferences)
    : paths_(std::move(paths)), store_(std::move(store)), preferences_(std::move(preferences)) {}

QString DockFolders::summary() const {
    const auto folders = store_.load();
    if (DockPreferences::unavailableReason()) {
        return folders.empty() ? QStringLiteral("Not available on this desktop")
                               : QStringLiteral("%1; this desktop's dock isn't supported")
                                     .arg(countOf(folders.size(), u"folder", u"folders"));
    }
    if (folders.empty()) {
        return QStringLiteral("No folders yet");
    }
    const QStringList tiles = preferences_.tiles();
    const auto docked = std::count_if(folders.begin(), folders.end(), [&](const AppFolder& f) {
        return tiles.contains(f.launcherId());
    });
    return QStringLiteral("%1, %2 in the dock")
        .arg(countOf(folders.size(), u"folder", u"folders"))
        .arg(docked);
}

bool DockFolders::dockShowsDotsForWindowlessApps() {
    return false; // GNOME's dash, the only dock supported so far, doesn't
}

QString DockFolders::openDotsUnavailable() {
    return QStringLiteral("GNOME's dash shows the open dot only for apps with a window, so folder "
                          "helpers can't show it and none are kept running.");
}

DockFoldersReport DockFolders::apply(const std::vector<AppFolder>& folders,
                                     const DockFoldersOptions& options) const {
    if (auto why = DockPreferences::unavailableReason()) {
        throw DockPreferencesError{*why};
    }
    DockFoldersReport report;
    QString error;
    if (!store_.save(folders, &error)) {
        throw DockPreferencesError{error};
    }
    const DockFolderBundleBuilder builder(paths_, store_);
    const bool resident = options.showIndicators && dockShowsDotsForWindowlessApps();
    const auto names = bundleNames(folders);
    QSet<QUuid> present;
    std::vector<DockAppsCodec::Item> items;
    QStringList hidden;
    const auto outcomes = builder.buildAll(folders, names, resident, options.rebuildAll);
    for (std::size_t i = 0; i < folders.size(); ++i) {
        const AppFolder& folder = folders[i];
        present.insert(folder.id);
        if (outcomes[i].launcher.isEmpty()) {
            report.problems.append(
                QStringLiteral("“%1” wasn't built: %2").arg(folder.name, outcomes[i].problem));
        } else if (outcomes[i].rebuilt) {
            report.built.append(outcomes[i].launcher);
        }
        if (!folder.showInDock || !builder.isBuilt(folder.id)) {
            continue;
        }
        items.push_back({folder.launcherId()});
        if (options.hideGroupedApps) {
            for (const AppEntry& app : folder.apps) {
                hidden.append(app.reference());
            }
        }
    }
    for (const QUuid& id : builder.builtFolders()) {
        if (!present.contains(id)) {
            report.removed += builder.remove(id);
        }
    }
    report.removed += builder.removeStaleFolderFiles(names.values());

    report.before = preferences_.tiles();
    report.after = DockAppsCodec::sync(report.before, items, hidden);
    if (report.dockChanged()) {
        preferences_.setTiles(report.after);
        const auto backups = preferences_.backups();
        report.backup = backups.empty() ? QString() : backups.front().path;
    }

    const DockFolderLoginAgent agent(paths_.autostart, paths_.tarvik);
    const bool wantAgent = resident && !items.empty();
    if (!(wantAgent ? agent.install(&error) : agent.uninstall(&error))) {
        report.problems.append(error);
    }
    if (!folders.empty() && !registerLinkHandler(&error)) {
        report.problems.append(
            QStringLiteral("Links from folders won't reach Tarvik: %1").arg(error));
    }
    terminateRunningHelpers();
    if (resident) {
        launchHelpers(folders);
    }
    return report;
}

DockFolders::Removal DockFolders::applyRemoval(const FolderLink& link) const {
    std::vector<AppFolder> folders = store_.load();
    for (AppFolder& folder : folders) {
        if (folder.id != link.folder) {
            continue;
        }
        const auto before = folder.apps.size();
        std::erase_if(folder.apps,
                      [&](const AppEntry& app) { return app.reference() == link.app; });
        if (folder.apps.size() == before) {
            return {false,
                    QStringLiteral("“%1” has no app %2 to remove.").arg(folder.name, link.app)};
        }
        QString error;
        if (!store_.save(folders, &error)) {
            return {false, error};
        }
        const DockFolderBundleBuilder builder(paths_, store_);
        if (builder.isBuilt(folder.id)) {
            try {
                builder.build(
                    folder, bundleNames(folders).value(folder.id),
                    dockShowsDotsForWindowlessApps() &&
                        QFile::exists(
                            DockFolderLoginAgent(paths_.autostart, paths_.tarvik).entryPath()));
            } catch (const DockFolderBundleBuilderError& e) {
                return {true,
                        QStringLiteral("Removed %1 from “%2”, but its icon wasn't updated: %3")
                            .arg(link.app, folder.name, e.message)};
            }
        }
        return {true, QStringLiteral("Removed %1 from “%2”.").arg(link.app, folder.name)};
    }
    return {false, QStringLiteral("That folder no longer exists.")};
}

QStringList DockFolders::restore(const DockBackup& backup) const {
    const DockFolderBundleBuilder builder(paths_, store_);
    for (const QString& tile : backup.tiles) {
        if (DockSpacers::kindOf(tile)) {
            try {
                builder.buildSpacer(tile);
            } catch (const DockFolderBundleBuilderError& e) {
                throw DockPreferencesError{e.message};
            }
        }
    }
    preferences_.setTiles(backup.tiles);
    return backup.tiles;
}

bool DockFolders::registerLinkHandler(QString* error) const {
    const QString current = DesktopApps::schemeHandler(QLatin1String(FolderLink::kScheme));
    const QString entry = paths_.applications + QLatin1Char('/') + QLatin1String(kLinkEntry);
    // An installed Tarvik's own entry handles them already.
    if (!current.isEmpty() && current != QLatin1String(kLinkEntry) &&
        current.startsWith(QLatin1String("org.pellor.tarvik"))) {
        return true;
    }
    QSaveFile f(entry);
    const QByteArray text = LauncherEntry::linkHandler(paths_.tarvik).toUtf8();
    if (QFile file(entry); file.open(QIODevice::ReadOnly) && file.readAll() == text &&
                           current == QLatin1String(kLinkEntry)) {
        return true;
    }
    if (!QDir().mkpath(paths_.applications) || !f.open(QIODevice::WriteOnly) || f.write(text) < 0 ||
        !f.commit()) {
        if (error != nullptr) {
            *error = QStringLiteral("Couldn't write %1: %2.").arg(entry, f.errorString());
        }
        return false;
    }
    return DesktopApps::setSchemeHandler(entry, QLatin1String(FolderLink::kScheme), error);
}

int DockFolders::launchHelpers(const std::vector<AppFolder>& folders) const {
    const QSet<QString> docked = [&] {
        const QStringList tiles = preferences_.tiles();
        return QSet<QString>(tiles.begin(), tiles.end());
    }();
    const DockFolderBundleBuilder builder(paths_, store_);
    const auto names = bundleNames(folders);
    int started = 0;
    for (const AppFolder& folder : folders) {
        if (!docked.contains(folder.launcherId()) || !builder.isBuilt(folder.id)) {
            continue;
        }
        const QString file = store_.foldersDirectory() + QLatin1Char('/') + names.value(folder.id) +
                             QStringLiteral(".json");
        if (QProcess::startDetached(paths_.helper, {QStringLiteral("--background"), file})) {
            ++started;
        }
    }
    return started;
}

void DockFolders::terminateRunningHelpers() const {
    QList<pid_t> running = residentHelpers(paths_.helper);
    for (pid_t pid : running) {
        ::kill(pid, SIGTERM);
    }
    for (int waited = 0; !running.isEmpty() && waited < 40; ++waited) { // 40 × 50 ms = 2 s
        QThread::msleep(50);
        running.removeIf([](pid_t pid) { return ::kill(pid, 0) != 0; });
    }
}

} // namespace tarvik
