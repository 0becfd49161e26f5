#include "core/sys/desktop_apps.h"
#include "core/sys/gnome_favorites.h"
#include "dock/dock_folder_login_agent.h"
#include "dock/dock_folders.h"
#include "dock/dock_layout.h"
#include "dock/folder_bundle_builder.h"
#include "tests/dock/dock_test_support.h"

#include <QFileInfo>
#include <QProcess>

using namespace tarvik;
using tarvik::test::DesktopSession;

namespace {

class DockApply : public tarvik::test::DockTest {
protected:
    DockFolders folders() const {
        return DockFolders(paths(), DockFolderStore(DockFolderStore::defaultSupportDirectory()),
                           DockPreferences());
    }
    static QString gsettingsList(const QStringList& ids) {
        QStringList quoted;
        for (const QString& id : ids) {
            quoted.append("'" + id + "'");
        }
        return "[" + quoted.join(", ") + "]";
    }
};

} // namespace

TEST_F(DockApply, FoldersJoinTheDockAndTheUsersFavouritesAreNeverLost) {
    const QStringList mine = ids({1, 2, 3, 4});
    ASSERT_TRUE(GnomeFavorites::write(mine, nullptr));
    AppFolder work = folder("Work", {2, 5});
    AppFolder games = folder("Games", {6});
    games.showInDock = false;

    auto report = folders().apply({work, games}, {});
    EXPECT_TRUE(report.problems.isEmpty()) << report.problems.join("\n").toStdString();
    EXPECT_EQ(report.before, mine);
    EXPECT_EQ(report.after, mine + QStringList{work.launcherId()});
    EXPECT_EQ(report.built.size(), 2);
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(), gsettingsList(report.after));
    EXPECT_FALSE(report.backup.isEmpty());
    EXPECT_EQ(folders().store().load().size(), 2u);
    EXPECT_TRUE(
        QFileInfo::exists(paths().applications + "/" + games.launcherId())); // built, not docked

    // The user drags the folder to the front; a later apply keeps it there, hides the grouped
    // apps' own tiles when asked, and the deleted folder's files go.
    DesktopSession::setFavouritesFromOutside(QStringList{work.launcherId()} + mine);
    ASSERT_TRUE(favouritesBecome(QStringList{work.launcherId()} + mine));
    report = folders().apply({work}, {.hideGroupedApps = true});
    EXPECT_EQ(report.after, (QStringList{work.launcherId()} + ids({1, 3, 4})));
    EXPECT_FALSE(QFileInfo::exists(paths().applications + "/" + games.launcherId()));
    EXPECT_FALSE(report.removed.isEmpty());

    // Nothing changes: no write, no new backup, no folder rebuilt unless asked.
    const auto backups = folders().preferences().backups().size();
    report = folders().apply({work}, {.hideGroupedApps = true});
    EXPECT_FALSE(report.dockChanged());
    EXPECT_EQ(folders().preferences().backups().size(), backups);
    EXPECT_TRUE(report.built.isEmpty());
    EXPECT_EQ(folders().apply({work}, {.hideGroupedApps = true, .rebuildAll = true}).built.size(),
              1);
    work.name = "Work and more";
    EXPECT_EQ(folders().apply({work}, {.hideGroupedApps = true}).built.size(), 1);

    // No folders left: only Tarvik's tile goes; hidden apps come back only by the user's hand.
    report = folders().apply({}, {});
    EXPECT_EQ(report.after, ids({1, 3, 4}));
}

TEST_F(DockApply, AFolderThatFailsToBuildIsNamedAndLeftOutWhileTheRestGoesOn) {
    AppFolder ok = folder("Ok", {1});
    AppFolder bad = folder("Bad", {2});
    DockPaths p = paths();
    // The folder files' place is a file: the second folder's JSON can't be written there.
    const DockFolderStore store(DockFolderStore::defaultSupportDirectory());
    QDir().mkpath(store.foldersDirectory() + "/Bad.json");
    const auto report = DockFolders(p, store, DockPreferences()).apply({ok, bad}, {});
    ASSERT_EQ(report.problems.size(), 1);
    EXPECT_TRUE(report.problems[0].startsWith("“Bad” wasn't built: "))
        << report.problems[0].toStdString();
    EXPECT_EQ(report.after, QStringList{ok.launcherId()});
}

TEST_F(DockApply, RemoveLinkTakesExactlyThatAppOutAndRebuildsTheIcon) {
    AppFolder f = folder("Mixed", {1, 2});
    f.apps.push_back({"Odd", "/opt/odd.desktop", QString("a&b+c.desktop")});
    folders().apply({f}, {});
    const qint64 version = DockFolderBundleBuilder(paths(), folders().store()).builtVersion(f.id);

    const auto link = FolderLink::parse(FolderLink::remove(f.id, "a&b+c.desktop"));
    ASSERT_TRUE(link);
    EXPECT_EQ(folders().applyRemoval(*link).message, "Removed a&b+c.desktop from “Mixed”.");
    const auto saved = folders().store().load();
    ASSERT_EQ(saved.size(), 1u);
    ASSERT_EQ(saved[0].apps.size(), 2u);
    EXPECT_EQ(saved[0].apps[1].reference(), DesktopSession::appId(2));
    EXPECT_GT(DockFolderBundleBuilder(paths(), folders().store()).builtVersion(f.id), version);

    const auto again = folders().applyRemoval(*link);
    EXPECT_FALSE(again.removed);
    EXPECT_EQ(again.message, "“Mixed” has no app a&b+c.desktop to remove.");
    EXPECT_EQ(folders().applyRemoval({FolderLink::Kind::Remove, QUuid::createUuid(), "x"}).message,
              "That folder no longer exists.");
}

TEST_F(DockApply, LinksAreHandedToTarvikAndTheLoginAgentIsItsOwnEntry) {
    folders().apply({folder("Work", {1})}, {.showIndicators = true});
    EXPECT_EQ(DesktopApps::schemeHandler("tarvik"), "org.pellor.tarvik.links.desktop");
    QProcess gio;
    gio.start("gio", {"mime", "x-scheme-handler/tarvik"});
    gio.waitForFinished();
    EXPECT_TRUE(gio.readAllStandardOutput().contains("org.pellor.tarvik.links.desktop"));
    EXPECT_EQ(validate(paths().applications + "/org.pellor.tarvik.links.desktop"), "");

    // GNOME can't show the dot for a windowless helper, so no agent is installed for it.
    const DockFolderLoginAgent agent(paths().autostart, paths().tarvik);
    EXPECT_FALSE(agent.isInstalled());
    ASSERT_TRUE(agent.install(nullptr));
    EXPECT_EQ(validate(agent.entryPath()), "");
    EXPECT_TRUE(agent.entryPath().endsWith("/org.pellor.tarvik.dockfolders.desktop"));
    EXPECT_FALSE(QFileInfo::exists(paths().autostart + "/org.pellor.tarvik.desktop"));
    folders().apply({folder("Work", {1})}, {.showIndicators = true});
    EXPECT_FALSE(agent.isInstalled()); // apply takes back what can't work here
}

TEST_F(DockApply, BackupsKeepTheTenNewestAndRestoreBringsBackSpacers) {
    const DockPreferences prefs;
    ASSERT_TRUE(GnomeFavorites::write(ids({1}), nullptr));
    for (int n = 2; n <= 13; ++n) {
        prefs.setTiles(ids({1, n}));
    }
    const auto backups = prefs.backups();
    ASSERT_EQ(backups.size(), 10u);
    EXPECT_EQ(backups.front().tiles, ids({1, 12})); // newest first: the list before the last write
    EXPECT_EQ(backups.back().tiles, ids({1, 3}));
    EXPECT_EQ(QDir(DockPreferences::defaultBackupsDirectory()).entryList(QDir::Files).size(), 10);

    // A backup holding a spacer whose launcher is gone: restoring makes it again.
    const QString spacer = "org.pellor.tarvik.spacer.1.desktop";
    DockBackup old{"", {}, ids({1}) + QStringList{spacer} + ids({2})};
    folders().restore(old);
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(), gsettingsList(old.tiles));
    EXPECT_EQ(validate(paths().applications + "/" + spacer), "");
    EXPECT_EQ(prefs.backups().front().tiles, ids({1, 13}));
}

TEST_F(DockApply, LayoutAddsSpacersAndNeverOverwritesAConcurrentChange) {
    DockLayout empty(DockPreferences(), paths());
    empty.reload();
    EXPECT_TRUE(empty.rows().empty());

    ASSERT_TRUE(GnomeFavorites::write(ids({1, 2, 3}), nullptr));
    DockLayout layout(DockPreferences(), paths());
    layout.reload();
    ASSERT_EQ(layout.rows().size(), 3u);
    EXPECT_EQ(layout.rows()[0].title, "App 1");
    EXPECT_FALSE(layout.hasChanges());

    const QUuid small = layout.addSpacer(DockSpacer::Small, layout.rows().back().id);
    layout.addSpacer(DockSpacer::Regular, layout.rows()[0].id);
    EXPECT_TRUE(layout.hasChanges());
    EXPECT_EQ(layout.spacerCount(), 2);
    ASSERT_TRUE(layout.apply()) << layout.errorMessage().value_or("").toStdString();
    const QStringList written{DesktopSession::appId(1), "org.pellor.tarvik.spacer.1.desktop",
                              DesktopSession::appId(2), DesktopSession::appId(3),
                              "org.pellor.tarvik.small-spacer.1.desktop"};
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(), gsettingsList(written));
    EXPECT_TRUE(
        QFileInfo::exists(paths().applications + "/org.pellor.tarvik.small-spacer.1.desktop"));
    EXPECT_FALSE(layout.removeSpacer(small)); // ids are new after the reload that follows apply

    // The user drags a tile in the dash meanwhile: nothing is written, the list reloads.
    ASSERT_TRUE(layout.removeSpacer(layout.rows()[1].id));
    QStringList dragged = written;
    dragged.move(0, 3);
    DesktopSession::setFavouritesFromOutside(dragged);
    ASSERT_TRUE(favouritesBecome(dragged));
    EXPECT_FALSE(layout.apply());
    EXPECT_EQ(layout.errorMessage(), DockLayout::changedMeanwhile());
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(), gsettingsList(dragged));
    EXPECT_EQ(layout.tiles(), dragged);

    // Removing the spacer now works, and its launcher goes with it.
    const auto spacerRow =
        std::find_if(layout.rows().begin(), layout.rows().end(),
                     [](const auto& r) { return r.spacer == DockSpacer::Regular; });
    ASSERT_NE(spacerRow, layout.rows().end());
    ASSERT_TRUE(layout.removeSpacer(spacerRow->id));
    ASSERT_TRUE(layout.apply());
    EXPECT_FALSE(QFileInfo::exists(paths().applications + "/org.pellor.tarvik.spacer.1.desktop"));
}
