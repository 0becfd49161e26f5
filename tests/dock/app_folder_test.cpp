#include "dock/app_folder.h"
#include "tests/support/temp_home.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace tarvik;

TEST(AppFolder, DecodesSavedFoldersAndTreatsAnythingElseAsNoFolders) {
    const QByteArray saved = R"([
      {"id": "0F4B6F62-2B44-4C3B-9A8E-3C0F5E1B7A11", "name": "Work", "showInDock": false,
       "apps": [{"name": "Terminal", "path": "/usr/share/applications/org.gnome.Terminal.desktop",
                 "bundleIdentifier": "org.gnome.Terminal"},
                {"name": "Files", "path": "/usr/share/applications/org.gnome.Nautilus.desktop"},
                {"name": "No path"}]},
      {"name": "no id is skipped", "apps": []},
      {"id": "6b0e5a0c-8f6e-4f7c-9a55-0a4c2b1d9e20"}
    ])";
    const auto folders = decodeFolders(saved);
    ASSERT_EQ(folders.size(), 2u);
    EXPECT_EQ(folders[0].name, "Work");
    EXPECT_FALSE(folders[0].showInDock);
    ASSERT_EQ(folders[0].apps.size(), 2u);
    EXPECT_EQ(folders[0].apps[0].bundleIdentifier, "org.gnome.Terminal");
    EXPECT_FALSE(folders[0].apps[1].bundleIdentifier);
    EXPECT_TRUE(folders[1].showInDock); // missing fields take their defaults
    EXPECT_TRUE(folders[1].apps.empty());

    EXPECT_TRUE(decodeFolders("").empty());
    EXPECT_TRUE(decodeFolders("{\"folders\": []}").empty());
    EXPECT_TRUE(decodeFolders("[{\"id\": \"0F4B6F62-2B44").empty()); // cut off mid-write
    EXPECT_TRUE(decodeFolders("[1, \"two\", null]").empty());
}

TEST(AppFolder, StoreReadsFoldersJsonFromItsSupportFolder) {
    tarvik::test::TempHome home;
    EXPECT_EQ(DockFolderStore::defaultSupportDirectory(), home.data() + "/Tarvik/DockFolders");
    QTemporaryDir dir;
    DockFolderStore store(dir.path());
    EXPECT_TRUE(store.load().empty()); // missing file
    tarvik::test::writeFile(store.listPath(),
                            R"([{"id":"0F4B6F62-2B44-4C3B-9A8E-3C0F5E1B7A11","name":"A"}])");
    EXPECT_EQ(store.load().size(), 1u);
}
