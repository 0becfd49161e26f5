#include "app/dock/dividers_tab.h"
#include "app/dock/dock_folders_screen.h"
#include "app/dock/folders_tab.h"
#include "app/shell/empty_state.h"
#include "app/shell/main_window.h"
#include "core/settings/preferences.h"
#include "core/sys/gnome_favorites.h"
#include "dock/dock_layout.h"
#include "dock/dock_spacer.h"
#include "tests/support/app_options.h"
#include "tests/support/gnome_shell_settings.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <gtest/gtest.h>

using namespace tarvik;
using test::GnomeShellSettings;

namespace {

const QString kAlpha = QStringLiteral("org.example.Alpha.desktop");
const QString kBeta = QStringLiteral("org.example.Beta.desktop");
const QString kFiles = QStringLiteral("org.gnome.Nautilus.desktop");
const QString kTerminal = QStringLiteral("org.gnome.Terminal.desktop");

// A user's Tarvik in a temporary home, with a stand-in for the folder helper program.
struct DockWorld {
    test::TempHome home;
    Preferences prefs{home.config() + "/Tarvik/Tarvik.conf"};
    DockPaths paths = [this] {
        const QString helper = home.path() + "/bin/tarvik-folder";
        test::writeFile(helper, "#!/bin/sh\nexit 0\n");
        QFile::setPermissions(helper, QFile::permissions(helper) | QFile::ExeOwner);
        return DockPaths{home.data() + "/applications", home.data() + "/icons/hicolor",
                         home.config() + "/autostart", TARVIK_BINARY, helper};
    }();
    DockFolders dock{paths, DockFolderStore(DockFolderStore::defaultSupportDirectory()),
                     DockPreferences(DockPreferences::defaultBackupsDirectory())};

    // The Dock as the user left it; none when there is no Dock to write to.
    explicit DockWorld(const std::optional<QStringList>& favourites) {
        QString error;
        if (favourites) {
            EXPECT_TRUE(GnomeFavorites::write(*favourites, &error)) << error.toStdString();
        }
    }
};

template <typename T> T* child(QWidget& w, const char* name) {
    T* found = w.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

QString quoted(const QStringList& ids) {
    QStringList parts;
    for (const QString& id : ids) {
        parts << "'" + id + "'";
    }
    return ids.isEmpty() ? QStringLiteral("@as []") : "[" + parts.join(", ") + "]";
}

void chooseInPicker(DockFoldersScreen& screen, const QString& search) {
    child<QLineEdit>(screen, "appSearch")->setText(search);
    auto* picker = child<QListWidget>(screen, "appPicker");
    picker->clearSelection();
    for (int i = 0; i < picker->count(); ++i) {
        if (!picker->item(i)->isHidden()) {
            picker->item(i)->setSelected(true);
        }
    }
}

} // namespace

TEST(DockFoldersScreen, ApplyingANewFolderAddsItAfterTheUsersFavouritesWhichKeepTheirOrder) {
    DockWorld w(QStringList{kFiles, kBeta, kTerminal});
    DockFoldersScreen screen(w.dock, w.prefs);
    screen.show(); // laid out, so clicks land on the buttons

    QTest::mouseClick(child<QPushButton>(screen, "newFolder"), Qt::LeftButton);
    auto* name = child<QLineEdit>(screen, "folderName");
    name->selectAll();
    QTest::keyClicks(name, "Writing");
    QTest::keyClick(name, Qt::Key_Return);
    chooseInPicker(screen, "alpha notes");
    ASSERT_EQ(child<QListWidget>(screen, "appPicker")->selectedItems().size(), 1);
    QTest::mouseClick(child<QPushButton>(screen, "addApps"), Qt::LeftButton);
    ASSERT_EQ(child<QListWidget>(screen, "folderApps")->count(), 1);
    EXPECT_TRUE(test::waitUntil(
        [&] { return !child<QLabel>(screen, "folderPreview")->pixmap().isNull(); }));

    auto* apply = child<QPushButton>(screen, "applyFolders");
    EXPECT_TRUE(apply->isDefault());
    QTest::mouseClick(apply, Qt::LeftButton);
    ASSERT_TRUE(test::waitUntil([&] { return !screen.foldersTab()->isBusy(); }));
    ASSERT_EQ(screen.foldersTab()->folders().size(), 1u);
    const AppFolder folder = screen.foldersTab()->folders().front();
    EXPECT_EQ(folder.name, "Writing");
    EXPECT_EQ(GnomeShellSettings::favourites(),
              quoted({kFiles, kBeta, kTerminal, folder.launcherId()}));
    EXPECT_TRUE(QFile::exists(w.paths.applications + "/" + folder.launcherId()));
    EXPECT_TRUE(child<QLabel>(screen, "folderStatus")->text().contains("backed up"))
        << child<QLabel>(screen, "folderStatus")->text().toStdString()
        << child<QLabel>(screen, "folderProblems")->text().toStdString();
    EXPECT_EQ(w.dock.preferences().backups().size(), 1u);

    // With grouped apps' own icons removed, Beta leaves the Dock when it joins the folder.
    child<QCheckBox>(screen, "hideGroupedApps")->setChecked(true);
    EXPECT_TRUE(w.prefs.dockFoldersHideGroupedApps());
    chooseInPicker(screen, "beta");
    QTest::mouseClick(child<QPushButton>(screen, "addApps"), Qt::LeftButton);
    QTest::mouseClick(apply, Qt::LeftButton);
    ASSERT_TRUE(test::waitUntil([&] { return !screen.foldersTab()->isBusy(); }));
    EXPECT_EQ(GnomeShellSettings::favourites(), quoted({kFiles, kTerminal, folder.launcherId()}));

    // Deleting asks first; Apply then takes the folder out and leaves the user's own tiles.
    QTest::mouseClick(child<QPushButton>(screen, "deleteFolder"), Qt::LeftButton);
    auto* confirm = child<QMessageBox>(screen, "confirmDeleteFolder");
    ASSERT_NE(confirm, nullptr);
    QTest::mouseClick(child<QPushButton>(*confirm, "confirmDelete"), Qt::LeftButton);
    EXPECT_TRUE(screen.foldersTab()->folders().empty());
    EXPECT_TRUE(child<QLabel>(screen, "noFolders")->isVisibleTo(&screen));
    QTest::mouseClick(apply, Qt::LeftButton);
    ASSERT_TRUE(test::waitUntil([&] { return !screen.foldersTab()->isBusy(); }));
    EXPECT_EQ(GnomeShellSettings::favourites(), quoted({kFiles, kTerminal}));
    EXPECT_FALSE(QFile::exists(w.paths.applications + "/" + folder.launcherId()));
}

TEST(DockFoldersScreen, OpenLinkShowsItsFolderOnTheFoldersTabAndNamesAppsNoLongerInstalled) {
    DockWorld w(QStringList{kFiles});
    AppFolder first{QUuid::createUuid(),
                    "Work",
                    {{"Alpha Notes", GnomeShellSettings::applications() + "/" + kAlpha, kAlpha}},
                    true};
    AppFolder second{QUuid::createUuid(),
                     "Games",
                     {{"Old Game", "/nowhere/org.example.OldGame.desktop",
                       QStringLiteral("org.example.OldGame.desktop")}},
                     true};
    QString error;
    ASSERT_TRUE(w.dock.store().save({first, second}, &error)) << error.toStdString();
    AppModels models(test::optionsIn(w.home));
    MainWindow window(models);
    window.openLink(*FolderLink::parse(FolderLink::open(second.id)));

    auto* screen = window.findChild<DockFoldersScreen*>();
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(models.navigator().selection(), AppSection::DockFolders);
    EXPECT_EQ(screen->tabs()->currentWidget(), screen->foldersTab());
    EXPECT_EQ(screen->foldersTab()->selectedFolder(), second.id);
    EXPECT_EQ(child<QLineEdit>(*screen, "folderName")->text(), "Games");
    auto* apps = child<QListWidget>(*screen, "folderApps");
    ASSERT_EQ(apps->count(), 1);
    EXPECT_EQ(apps->item(0)->text(), "Old Game (not installed)");

    screen->tabs()->setCurrentWidget(screen->dividersTab());
    window.openLink(*FolderLink::parse(FolderLink::open(first.id)));
    EXPECT_EQ(screen->tabs()->currentWidget(), screen->foldersTab());
    EXPECT_EQ(screen->foldersTab()->selectedFolder(), first.id);
    ASSERT_EQ(apps->count(), 1);
    EXPECT_EQ(apps->item(0)->text(), "Alpha Notes");

    window.openLink(*FolderLink::parse(FolderLink::open(QUuid::createUuid())));
    EXPECT_EQ(child<QLabel>(*screen, "folderStatus")->text(), "That folder no longer exists.");
    EXPECT_EQ(screen->foldersTab()->selectedFolder(), first.id);
}

TEST(DockFoldersScreen, RemoveLinkTakesOutExactlyTheAppWhoseReferenceHoldsAmpersandAndPlus) {
    DockWorld w(QStringList{kFiles});
    const QString tricky = QStringLiteral("org.example.Rock&Roll+Pop.desktop");
    AppFolder folder{
        QUuid::createUuid(),
        "Music",
        {{"Rock", "/nowhere/Rock.desktop", QStringLiteral("org.example.Rock.desktop")},
         {"Rock and Roll", "/nowhere/RockRoll.desktop", tricky},
         {"Roll Pop", "/nowhere/RollPop.desktop", QStringLiteral("org.example.Roll Pop.desktop")}},
        true};
    QString error;
    ASSERT_TRUE(w.dock.store().save({folder}, &error)) << error.toStdString();
    DockFoldersScreen screen(w.dock, w.prefs);
    const auto link = FolderLink::parse(FolderLink::remove(folder.id, tricky));
    ASSERT_TRUE(link.has_value());

    screen.openLink(*link);
    ASSERT_TRUE(test::waitUntil([&] { return !screen.foldersTab()->isBusy(); }));
    const auto saved = w.dock.store().load();
    ASSERT_EQ(saved.size(), 1u);
    ASSERT_EQ(saved[0].apps.size(), 2u);
    EXPECT_EQ(saved[0].apps[0].reference(), "org.example.Rock.desktop");
    EXPECT_EQ(saved[0].apps[1].reference(), "org.example.Roll Pop.desktop");
    EXPECT_EQ(child<QListWidget>(screen, "folderApps")->count(), 2);
    EXPECT_EQ(child<QLabel>(screen, "folderStatus")->text(),
              QStringLiteral("Removed %1 from “Music”.").arg(tricky));
}

TEST(DockFoldersScreen, DividersAddASmallSpaceAfterTheLastAppApplyWritesItAndABackupUndoesIt) {
    DockWorld w(QStringList{});
    DockFoldersScreen screen(w.dock, w.prefs);
    screen.tabs()->setCurrentWidget(screen.dividersTab());
    auto* empty = child<EmptyState>(screen, "dockEmpty");
    EXPECT_TRUE(empty->isVisibleTo(&screen));
    EXPECT_TRUE(empty->sentence().contains(DockLayout::emptyTitle()));
    EXPECT_TRUE(empty->sentence().contains(DockLayout::emptyDetail()));
    EXPECT_FALSE(child<QPushButton>(screen, "addSmallSpace")->isEnabled());

    QString error;
    ASSERT_TRUE(GnomeFavorites::write({kAlpha, kBeta}, &error));
    QTest::mouseClick(child<QPushButton>(screen, "reloadDock"), Qt::LeftButton);
    auto* rows = child<QListWidget>(screen, "dockRows");
    ASSERT_EQ(rows->count(), 2);
    EXPECT_EQ(rows->item(0)->text(), "Alpha Notes");
    rows->setCurrentRow(0);
    EXPECT_FALSE(child<QPushButton>(screen, "removeSpace")->isEnabled()); // apps stay
    rows->setCurrentRow(-1);
    QTest::mouseClick(child<QPushButton>(screen, "addSmallSpace"), Qt::LeftButton);
    ASSERT_EQ(rows->count(), 3);
    EXPECT_EQ(rows->item(2)->text(), DockSpacers::title(DockSpacer::Small));
    EXPECT_TRUE(child<QPushButton>(screen, "removeSpace")->isEnabled());

    QTest::mouseClick(child<QPushButton>(screen, "applySpaces"), Qt::LeftButton);
    const QStringList tiles = GnomeFavorites::read();
    ASSERT_EQ(tiles.size(), 3);
    EXPECT_EQ(DockSpacers::kindOf(tiles[2]), DockSpacer::Small);
    EXPECT_EQ(GnomeShellSettings::favourites(), quoted({kAlpha, kBeta, tiles[2]}));
    EXPECT_TRUE(QFile::exists(w.paths.applications + "/" + tiles[2]));

    QTest::mouseClick(child<QPushButton>(screen, "restoreBackup"), Qt::LeftButton);
    auto* dialog = child<QDialog>(screen, "restoreBackupDialog");
    ASSERT_NE(dialog, nullptr);
    auto* backups = child<QListWidget>(*dialog, "backupList");
    ASSERT_GE(backups->count(), 1);
    EXPECT_TRUE(backups->item(0)->text().contains("2 tiles"))
        << backups->item(0)->text().toStdString();
    QTest::mouseClick(child<QPushButton>(*dialog, "confirmRestore"), Qt::LeftButton);
    EXPECT_EQ(GnomeShellSettings::favourites(), quoted({kAlpha, kBeta}));
    EXPECT_EQ(rows->count(), 2);
}

TEST(DockFoldersScreen, DividersWriteNothingWhenTheDockChangedSinceTheyLoaded) {
    DockWorld w(QStringList{kAlpha, kBeta});
    DockFoldersScreen screen(w.dock, w.prefs);
    screen.tabs()->setCurrentWidget(screen.dividersTab());
    QTest::mouseClick(child<QPushButton>(screen, "addSpace"), Qt::LeftButton);

    GnomeShellSettings::setFavourites(quoted({kBeta}));
    // This process sees another's write once GLib has read the changed file.
    ASSERT_TRUE(test::waitUntil([] { return GnomeFavorites::read() == QStringList{kBeta}; }));
    QTest::mouseClick(child<QPushButton>(screen, "applySpaces"), Qt::LeftButton);
    EXPECT_EQ(child<QLabel>(screen, "spacesError")->text(), DockLayout::changedMeanwhile());
    EXPECT_EQ(GnomeShellSettings::favourites(), quoted({kBeta}));
    EXPECT_EQ(child<QListWidget>(screen, "dockRows")->count(), 1);
}

// GLib finds schemas once per process, so a run of this program without any is a child of its
// own, which this test starts and then is.
TEST(DockFoldersScreen, WithoutGnomeShellBothTabsSayWhyAndNothingCanBeApplied) {
    if (GnomeShellSettings::schemaWanted()) {
        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(GnomeShellSettings::kAbsentVariable, "1");
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(),
                    {"--gtest_filter=DockFoldersScreen."
                     "WithoutGnomeShellBothTabsSayWhyAndNothingCanBeApplied"});
        ASSERT_TRUE(child.waitForFinished(60000));
        const QString out = QString::fromUtf8(child.readAllStandardOutput());
        EXPECT_EQ(child.exitCode(), 0) << out.toStdString();
        EXPECT_TRUE(out.contains("[  PASSED  ] 1 test")) << out.toStdString();
        return;
    }
    DockWorld w(std::nullopt);
    DockFoldersScreen screen(w.dock, w.prefs);
    for (QWidget* tab : {static_cast<QWidget*>(screen.foldersTab()),
                         static_cast<QWidget*>(screen.dividersTab())}) {
        auto* why = child<QLabel>(*tab, "dockUnavailable");
        EXPECT_FALSE(why->isHidden());
        EXPECT_TRUE(why->text().contains(DockPreferences::supportedDesktops()));
    }
    EXPECT_FALSE(child<QPushButton>(screen, "applyFolders")->isEnabled());
    EXPECT_FALSE(child<QPushButton>(screen, "applySpaces")->isEnabled());
    EXPECT_FALSE(child<QPushButton>(screen, "addSpace")->isEnabled());
    EXPECT_FALSE(child<QPushButton>(screen, "restoreBackup")->isEnabled());
    EXPECT_FALSE(child<QCheckBox>(screen, "showOpenDots")->isEnabled());
    EXPECT_EQ(child<QLabel>(screen, "openDotsNote")->text(), DockFolders::openDotsUnavailable());
}
