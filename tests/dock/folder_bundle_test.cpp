#include "dock/folder_bundle_builder.h"
#include "folder-helper/folder_icon_renderer.h"
#include "tests/dock/dock_test_support.h"
#include "tests/support/temp_home.h"

#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QSettings>

using namespace tarvik;
using tarvik::test::DesktopSession;

namespace {

class FolderBundle : public tarvik::test::DockTest {};

// The colour at the centre of grid cell `cell` (0…8) of a rendered icon.
QColor cellColour(const QImage& icon, int cell) {
    const int size = icon.width();
    const double plate = size * 0.88;
    const double pad = plate * 0.09;
    const double gap = plate * 0.045;
    const double side = (plate - 2 * pad - 2 * gap) / 3;
    const double x = size * 0.06 + pad + (cell % 3) * (side + gap) + side / 2;
    const double y = size * 0.06 + pad + (cell / 3) * (side + gap) + side / 2;
    return icon.pixelColor(static_cast<int>(x), static_cast<int>(y));
}

QString entryValue(const QString& path, const QString& key) {
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    for (const QByteArray& line : f.readAll().split('\n')) {
        if (line.startsWith(key.toUtf8() + '=')) {
            return QString::fromUtf8(line.mid(key.size() + 1));
        }
    }
    return {};
}

} // namespace

TEST_F(FolderBundle, IconShowsTheFirstNineAppsInGridOrder) {
    const AppFolder twelve = folder("Twelve", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    const QImage icon = FolderIconRenderer(twelve).image(256);
    for (int cell = 0; cell < 9; ++cell) {
        EXPECT_EQ(cellColour(icon, cell).rgb(), DesktopSession::appColour(cell + 1).rgb())
            << "cell " << cell;
    }
    // The tenth app and later add nothing: the icon equals the one of the first nine alone.
    EXPECT_EQ(icon, FolderIconRenderer(folder("Nine", {1, 2, 3, 4, 5, 6, 7, 8, 9})).image(256));

    // No apps: an empty plate; an uninstalled app still holds its cell, in no app's colour.
    const QImage empty = FolderIconRenderer(folder("Empty", {})).image(128);
    EXPECT_EQ(cellColour(empty, 0), cellColour(empty, 8));
    AppFolder missing = folder("Missing", {1});
    missing.apps.insert(missing.apps.begin(),
                        AppEntry{"Gone", "/nowhere/gone.desktop", QString("gone.desktop")});
    const QImage withGone = FolderIconRenderer(missing).image(128);
    EXPECT_NE(cellColour(withGone, 0), cellColour(empty, 0));
    EXPECT_NE(cellColour(withGone, 0).rgb(), DesktopSession::appColour(1).rgb());
    EXPECT_EQ(cellColour(withGone, 1).rgb(), DesktopSession::appColour(1).rgb());
}

TEST_F(FolderBundle, BuildWritesAValidLauncherEveryIconSizeAndTheFolderFile) {
    const DockPaths p = paths();
    const DockFolderStore store(DockFolderStore::defaultSupportDirectory());
    const DockFolderBundleBuilder builder(p, store);
    AppFolder f = folder("Work / Play\nNight", {1, 2, 3});
    const QString launcher = builder.build(f, "Work - Play", false);

    EXPECT_EQ(launcher, p.applications + "/" + f.launcherId());
    EXPECT_EQ(validate(launcher), "");
    EXPECT_EQ(entryValue(launcher, "Name"), "Work / Play\\nNight");
    const QString json = store.foldersDirectory() + "/Work - Play.json";
    EXPECT_EQ(entryValue(launcher, "Exec"), p.helper + " \"" + json + "\"");
    EXPECT_EQ(decodeFolder(tarvik::test::readAll(json))->apps.size(), 3u);
    const QString icon = entryValue(launcher, "Icon");
    for (const FolderIconSize& size : folderIconSizes()) {
        const QString png = p.icons + "/" + size.themeFolder() + "/apps/" + icon + ".png";
        EXPECT_EQ(QImageReader(png).size(), QSize(size.pixels, size.pixels)) << png.toStdString();
    }

    // A rebuild gets a newer version and a new icon name; the old icons go.
    const qint64 first = builder.builtVersion(f.id);
    builder.build(f, "Work - Play", false);
    EXPECT_GT(builder.builtVersion(f.id), first);
    const QString newIcon = entryValue(launcher, "Icon");
    EXPECT_NE(newIcon, icon);
    EXPECT_FALSE(QFileInfo::exists(p.icons + "/16x16/apps/" + icon + ".png"));
    EXPECT_TRUE(QFileInfo::exists(p.icons + "/16x16/apps/" + newIcon + ".png"));
    EXPECT_EQ(builder.builtFolders(), QList<QUuid>{f.id});

    // Removing takes the launcher, the icons and the folder file, and nothing else.
    const QStringList removed = builder.remove(f.id);
    EXPECT_EQ(removed.size(), 1 + static_cast<int>(folderIconSizes().size()) + 1);
    EXPECT_FALSE(builder.isBuilt(f.id));
    EXPECT_FALSE(QFileInfo::exists(json));
}

TEST_F(FolderBundle, AFailedBuildLeavesThePreviousFolderWorking) {
    DockPaths p = paths();
    const DockFolderStore store(DockFolderStore::defaultSupportDirectory());
    AppFolder f = folder("Work", {1});
    DockFolderBundleBuilder(p, store).build(f, "Work", false);
    const QString launcher = p.applications + "/" + f.launcherId();
    const QString before = entryValue(launcher, "Icon");

    // The helper is missing: said plainly, nothing changes.
    DockPaths noHelper = p;
    noHelper.helper = p.helper + "-missing";
    f.apps.push_back({"App 2", "", QString("app2.desktop")});
    try {
        DockFolderBundleBuilder(noHelper, store).build(f, "Work", false);
        FAIL() << "built without its helper";
    } catch (const DockFolderBundleBuilderError& e) {
        EXPECT_TRUE(e.message.startsWith("The folder helper is missing at " + noHelper.helper));
    }
    // The icons can't be written (their folder's place is a file): the old launcher and its
    // icons stay.
    DockPaths blocked = p;
    blocked.icons = launcher + "/hicolor";
    EXPECT_THROW(DockFolderBundleBuilder(blocked, store).build(f, "Work", false),
                 DockFolderBundleBuilderError);
    EXPECT_EQ(entryValue(launcher, "Icon"), before);
    EXPECT_TRUE(QFileInfo::exists(p.icons + "/16x16/apps/" + before + ".png"));
}

TEST_F(FolderBundle, SpacerLauncherIsBlankNamelessAndValid) {
    const DockFolderBundleBuilder builder(
        paths(), DockFolderStore(DockFolderStore::defaultSupportDirectory()));
    builder.buildSpacer("org.pellor.tarvik.small-spacer.1.desktop");
    const QString path = paths().applications + "/org.pellor.tarvik.small-spacer.1.desktop";
    EXPECT_EQ(validate(path), "");
    EXPECT_EQ(entryValue(path, "Name"), "\\s");
    EXPECT_EQ(entryValue(path, "NoDisplay"), "true");
    const QImage blank(paths().icons + "/scalable/apps/" + entryValue(path, "Icon") + ".svg");
    EXPECT_EQ(blank.size(), QSize(64, 64));
    EXPECT_EQ(blank.pixelColor(32, 32).alpha(), 0);
    EXPECT_EQ(builder.builtSpacers(), QStringList{"org.pellor.tarvik.small-spacer.1.desktop"});
    EXPECT_THROW(builder.buildSpacer("firefox.desktop"), DockFolderBundleBuilderError);
    EXPECT_TRUE(builder.removeSpacer("firefox.desktop").isEmpty()); // never anything but spacers
}
