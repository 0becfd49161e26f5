#include "core/sys/desktop_apps.h"
#include "dock/app_folder.h"
#include "tests/dock/dock_test_support.h"
#include "tests/support/tarvik_run.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace tarvik;
using tarvik::test::DesktopSession;
using tarvik::test::Outcome;
using tarvik::test::TarvikRun;

namespace {

class DockCommand : public tarvik::test::DockTest {
protected:
    Outcome tarvik(const QStringList& args) const {
        return TarvikRun{}(args, DesktopSession::current().home());
    }
    QJsonArray dockList() const {
        return QJsonDocument::fromJson(tarvik({"dock", "list", "--json"}).out.toUtf8()).array();
    }
};

} // namespace

TEST_F(DockCommand, MakesAFolderTheDashShowsAndTakesItAwayAgain) {
    DesktopSession::setFavouritesFromOutside(ids({1, 2}));
    // Unconfirmed without a terminal: nothing happens.
    Outcome o = tarvik({"dock", "folders", "create", "Work", "App 3", "app4"});
    EXPECT_EQ(o.exitCode, 2);
    EXPECT_TRUE(o.err.contains("--yes")) << o.err.toStdString();
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(), "['app1.desktop', 'app2.desktop']");

    o = tarvik({"dock", "folders", "create", "Work", "App 3", "app4", "--yes"});
    ASSERT_EQ(o.exitCode, 0) << o.err.toStdString();
    EXPECT_TRUE(o.out.contains("+ Work (folder)")) << o.out.toStdString();
    const auto folders = DockFolderStore(DockFolderStore::defaultSupportDirectory()).load();
    ASSERT_EQ(folders.size(), 1u);
    EXPECT_EQ(folders[0].apps[0].reference(), "app3.desktop");
    EXPECT_EQ(folders[0].apps[1].reference(), "app4.desktop");
    const QString launcher = paths().applications + "/" + folders[0].launcherId();
    EXPECT_EQ(validate(launcher), "");
    // The launcher runs the real helper that sits beside tarvik.
    EXPECT_TRUE(test::readAll(launcher).contains(QFileInfo(TARVIK_BINARY).path().toUtf8() +
                                                 "/tarvik-folder "));
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(),
              "['app1.desktop', 'app2.desktop', '" + folders[0].launcherId() + "']");
    EXPECT_EQ(DesktopApps::schemeHandler("tarvik"), "org.pellor.tarvik.links.desktop");

    const QJsonArray tiles = dockList();
    ASSERT_EQ(tiles.size(), 3);
    EXPECT_EQ(tiles[2].toObject()["kind"].toString(), "folder");
    EXPECT_EQ(tiles[2].toObject()["title"].toString(), "Work (folder)");
    EXPECT_EQ(tiles[0].toObject()["title"].toString(), "App 1");

    o = tarvik({"dock", "folders", "remove", "Work", "--yes"});
    ASSERT_EQ(o.exitCode, 0) << o.err.toStdString();
    EXPECT_TRUE(o.out.contains("− Work (folder)")) << o.out.toStdString();
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(), "['app1.desktop', 'app2.desktop']");
    EXPECT_FALSE(QFileInfo::exists(launcher));

    // Wrong names are said plainly.
    o = tarvik({"dock", "folders", "create", "Odd", "No Such App", "--yes"});
    EXPECT_EQ(o.exitCode, 2);
    EXPECT_TRUE(o.err.contains("No installed app is called “No Such App”")) << o.err.toStdString();
    o = tarvik({"dock", "folders", "remove", "Nothing", "--yes"});
    EXPECT_EQ(o.exitCode, 2);
    EXPECT_TRUE(o.err.contains("There is no dock folder “Nothing”")) << o.err.toStdString();
}

TEST_F(DockCommand, AddsAndRemovesSpacesAndRestoresTheDockFromABackup) {
    DesktopSession::setFavouritesFromOutside(ids({1, 2}));
    Outcome o = tarvik({"dock", "spacer", "add", "--after", "App 1", "--small", "--yes"});
    ASSERT_EQ(o.exitCode, 0) << o.err.toStdString();
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(),
              "['app1.desktop', 'org.pellor.tarvik.small-spacer.1.desktop', 'app2.desktop']");
    EXPECT_EQ(dockList()[1].toObject()["title"].toString(), "Small Space");

    o = tarvik({"dock", "spacer", "remove", "1", "--yes"});
    EXPECT_EQ(o.exitCode, 2); // tile 1 is an app
    EXPECT_TRUE(o.err.contains("Tile 1 is not a space")) << o.err.toStdString();
    o = tarvik({"dock", "spacer", "remove", "2", "--yes"});
    ASSERT_EQ(o.exitCode, 0) << o.err.toStdString();
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(), "['app1.desktop', 'app2.desktop']");
    EXPECT_FALSE(
        QFileInfo::exists(paths().applications + "/org.pellor.tarvik.small-spacer.1.desktop"));

    // The newest backup holds the list with the space, from before its removal.
    o = tarvik({"dock", "restore", "--yes"});
    ASSERT_EQ(o.exitCode, 0) << o.err.toStdString();
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(),
              "['app1.desktop', 'org.pellor.tarvik.small-spacer.1.desktop', 'app2.desktop']");
    EXPECT_TRUE(
        QFileInfo::exists(paths().applications + "/org.pellor.tarvik.small-spacer.1.desktop"));
    EXPECT_EQ(tarvik({"dock", "restore", "/nowhere.json", "--yes"}).exitCode, 2);

    // Older backups by their number: 1 is the newest, the list before the restore.
    const Outcome list = tarvik({"dock", "restore", "--list"});
    EXPECT_EQ(list.exitCode, 0);
    EXPECT_TRUE(list.out.startsWith("1 ")) << list.out.toStdString();
    EXPECT_TRUE(list.out.contains("2 tiles")) << list.out.toStdString();
    ASSERT_EQ(tarvik({"dock", "restore", "1", "--yes"}).exitCode, 0);
    EXPECT_EQ(DesktopSession::favouritesSeenByGsettings(), "['app1.desktop', 'app2.desktop']");
    const Outcome beyond = tarvik({"dock", "restore", "99", "--yes"});
    EXPECT_EQ(beyond.exitCode, 2);
    EXPECT_TRUE(beyond.err.contains("There is no backup 99")) << beyond.err.toStdString();
}

TEST_F(DockCommand, WithoutGnomeShellItExplainsAndNeverAborts) {
    TarvikRun run;
    QTemporaryDir empty;
    run.env = {{"GSETTINGS_SCHEMA_DIR", empty.path()}, {"XDG_DATA_DIRS", empty.path()}};
    for (const QStringList& args :
         {QStringList{"dock", "list"}, QStringList{"dock", "folders", "create", "W", "x", "--yes"},
          QStringList{"dock", "spacer", "add", "--after", "x", "--yes"}}) {
        const Outcome o = run(args, DesktopSession::current().home());
        EXPECT_EQ(o.exitCode, 1) << args.join(' ').toStdString() << o.err.toStdString();
        EXPECT_TRUE(o.err.contains("GNOME Shell's settings (org.gnome.shell) aren't installed"))
            << o.err.toStdString();
        EXPECT_TRUE(o.err.contains("Dock Folders works with GNOME's dash")) << o.err.toStdString();
    }
    // The login agent's launch with open dots wanted: GNOME can't show them; still status 0.
    ASSERT_EQ(tarvik({"settings", "set", "dockFoldersShowIndicators", "true"}).exitCode, 0);
    const Outcome launch = tarvik({"--launch-folders"});
    EXPECT_EQ(launch.exitCode, 0);
    EXPECT_TRUE(launch.err.contains("open dot only for apps with a window"))
        << launch.err.toStdString();
    tarvik({"settings", "reset", "dockFoldersShowIndicators"});
}
