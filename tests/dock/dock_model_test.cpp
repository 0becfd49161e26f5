#include "dock/app_folder.h"
#include "dock/dock_apps_codec.h"
#include "dock/dock_spacer.h"
#include "dock/folder_link.h"

#include <QJsonDocument>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

AppFolder named(const QString& name) {
    AppFolder f;
    f.id = QUuid::createUuid();
    f.name = name;
    return f;
}

} // namespace

TEST(DockFolderNames, CollidingAndUnsafeNamesGetDistinctFileNames) {
    const std::vector<AppFolder> folders{named("Work"),      named("Work"),  named("work"),
                                         named("Games/Fun"), named("../.."), named("")};
    const auto names = bundleNames(folders);
    EXPECT_EQ(names.value(folders[0].id), "Work");
    EXPECT_EQ(names.value(folders[1].id), "Work 2");
    EXPECT_EQ(names.value(folders[2].id), "work 3"); // file systems may ignore case
    EXPECT_EQ(names.value(folders[3].id), "Games-Fun");
    EXPECT_FALSE(names.value(folders[4].id).contains('/'));
    EXPECT_FALSE(names.value(folders[4].id).startsWith('.'));
    EXPECT_EQ(names.value(folders[5].id), "Folder");
    EXPECT_EQ(folders[0].launcherId(), "org.pellor.tarvik.folder." +
                                           folders[0].id.toString(QUuid::WithoutBraces) +
                                           ".desktop");
}

TEST(DockFolderList, EncodesPrettyWithSortedKeysAndReadsItBack) {
    AppFolder f = named("Tools");
    f.showInDock = false;
    f.apps.push_back({"Files", "/usr/share/applications/org.gnome.Nautilus.desktop",
                      QString("org.gnome.Nautilus.desktop")});
    f.apps.push_back({"Script", "/opt/script.desktop", std::nullopt});
    const QByteArray json = encodeFolders({f});
    EXPECT_TRUE(json.contains("\n    ")); // indented
    EXPECT_LT(json.indexOf("\"apps\""), json.indexOf("\"id\""));
    EXPECT_LT(json.indexOf("\"id\""), json.lastIndexOf("\"name\"")); // the apps hold names too
    EXPECT_LT(json.lastIndexOf("\"name\""), json.indexOf("\"showInDock\""));
    const auto back = decodeFolders(json);
    ASSERT_EQ(back.size(), 1u);
    EXPECT_EQ(back[0].id, f.id);
    EXPECT_FALSE(back[0].showInDock);
    ASSERT_EQ(back[0].apps.size(), 2u);
    EXPECT_EQ(back[0].apps[0].reference(), "org.gnome.Nautilus.desktop");
    EXPECT_EQ(back[0].apps[1].reference(), "script.desktop"); // no id: its file's name
    EXPECT_EQ(decodeFolder(encodeFolder(f))->name, "Tools");
    EXPECT_FALSE(decodeFolder("[]"));
}

TEST(FolderLink, RoundTripsAndRejectsEverythingElse) {
    const QUuid id = QUuid::createUuid();
    const QString open = FolderLink::open(id);
    EXPECT_EQ(open, "tarvik://folder/" + id.toString(QUuid::WithoutBraces).toUpper());
    const auto parsed = FolderLink::parse(open);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->kind, FolderLink::Kind::Open);
    EXPECT_EQ(parsed->folder, id);

    for (const QString& app :
         {QStringLiteral("a&b+c=d?e.desktop"), QStringLiteral("Ünïcode app %20.desktop"),
          QStringLiteral("kde4/dolphin.desktop")}) {
        const QString link = FolderLink::remove(id, app);
        EXPECT_FALSE(link.section('?', 1).contains('+')) << link.toStdString();
        EXPECT_EQ(link.section('?', 1).count('&'), 0) << link.toStdString();
        const auto removal = FolderLink::parse(link);
        ASSERT_TRUE(removal) << link.toStdString();
        EXPECT_EQ(removal->kind, FolderLink::Kind::Remove);
        EXPECT_EQ(removal->folder, id);
        EXPECT_EQ(removal->app, app);
    }
    const QString uuid = id.toString(QUuid::WithoutBraces);
    for (const QString& bad : QStringList{
             "https://folder/" + uuid, "tarvik://folders/" + uuid, "tarvik://folder/not-a-uuid",
             "tarvik://folder/" + uuid + "/open", "tarvik://folder/" + uuid + "/remove",
             "tarvik://folder/" + uuid + "/remove?app=",
             "tarvik://folder/" + uuid + "/remove?app=a&x=b", "tarvik://folder/" + uuid + "?app=a",
             "tarvik://user@folder/" + uuid, "tarvik://folder/" + uuid + "#x",
             QString("tarvik://folder/"), QString()}) {
        EXPECT_FALSE(FolderLink::parse(bad)) << bad.toStdString();
    }
}

TEST(DockAppsCodec, SyncKeepsTheUsersTilesAndFoldersWhereTheyAre) {
    const QString work = "org.pellor.tarvik.folder.1b4e28ba-2fa1-11d2-883f-0016d3cca427.desktop";
    const QString games = "org.pellor.tarvik.folder.6ba7b810-9dad-11d1-80b4-00c04fd430c8.desktop";
    const QString gone = "org.pellor.tarvik.folder.6ba7b811-9dad-11d1-80b4-00c04fd430c8.desktop";
    const QStringList tiles{"firefox.desktop",
                            work,
                            "org.gnome.Nautilus.desktop",
                            gone,
                            "org.pellor.tarvik.spacer.1.desktop",
                            "code.desktop"};

    // The user's tiles keep their order, Work stays where the user dragged it, the deleted
    // folder's tile goes, the new folder comes last.
    EXPECT_EQ(DockAppsCodec::sync(tiles, {{work}, {games}}, {}),
              (QStringList{"firefox.desktop", work, "org.gnome.Nautilus.desktop",
                           "org.pellor.tarvik.spacer.1.desktop", "code.desktop", games}));
    // Grouped apps' own tiles go when asked; apps not in the dock are no matter.
    EXPECT_EQ(DockAppsCodec::sync(tiles, {{work}}, {"code.desktop", "gimp.desktop"}),
              (QStringList{"firefox.desktop", work, "org.gnome.Nautilus.desktop",
                           "org.pellor.tarvik.spacer.1.desktop"}));
    // No folders: only Tarvik's folder tiles go. A duplicate folder tile is kept once.
    EXPECT_EQ(DockAppsCodec::sync({"a.desktop", work, work}, {}, {}), QStringList{"a.desktop"});
    EXPECT_EQ(DockAppsCodec::sync({work, work}, {{work}}, {}), QStringList{work});
    // Only our own launchers count as folders.
    EXPECT_FALSE(DockAppsCodec::isFolderTile("org.pellor.tarvik.desktop"));
    EXPECT_FALSE(DockAppsCodec::isFolderTile("evil.org.pellor.tarvik.folder.x.desktop"));

    EXPECT_EQ(DockAppsCodec::signature({"a.desktop", "org.pellor.tarvik.spacer.3.desktop",
                                        "org.pellor.tarvik.small-spacer.1.desktop"}),
              (QStringList{"a.desktop", "spacer-tile", "small-spacer-tile"}));
}

TEST(DockSpacers, TilesAreRecognisedAndNewOnesNeverRepeat) {
    EXPECT_EQ(DockSpacers::kindOf("org.pellor.tarvik.spacer.12.desktop"), DockSpacer::Regular);
    EXPECT_EQ(DockSpacers::kindOf("org.pellor.tarvik.small-spacer.1.desktop"), DockSpacer::Small);
    EXPECT_FALSE(DockSpacers::kindOf("org.pellor.tarvik.spacer.x.desktop"));
    EXPECT_FALSE(DockSpacers::kindOf("org.pellor.tarvik.spacer.1"));
    EXPECT_EQ(DockSpacers::title(DockSpacer::Small), "Small Space");
    EXPECT_EQ(DockSpacers::id(DockSpacer::Regular), "spacer-tile");
    const QStringList taken{"org.pellor.tarvik.spacer.1.desktop",
                            "org.pellor.tarvik.spacer.2.desktop"};
    EXPECT_EQ(DockSpacers::newTile(DockSpacer::Regular, taken),
              "org.pellor.tarvik.spacer.3.desktop");
    EXPECT_EQ(DockSpacers::newTile(DockSpacer::Small, taken),
              "org.pellor.tarvik.small-spacer.1.desktop");
}
