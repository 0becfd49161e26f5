// The folder popup drawn offscreen: what it shows for a folder, an empty one and a file that
// can't be read, how it starts apps and what it hands to Tarvik.
#include "dock/folder_file.h"
#include "dock/folder_link.h"
#include "folder-helper/folder_popup.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

using tarvik::AppEntry;
using tarvik::AppFolder;
using tarvik::FolderLink;
using tarvik::FolderPopup;
using tarvik::readFolderFile;
using tarvik::test::readAll;
using tarvik::test::waitUntil;
using tarvik::test::writeFile;

namespace {

// Desktop entries in a folder of their own, named by path: the popup needs no installed app.
struct Entries {
    QTemporaryDir dir;

    AppEntry app(const QString& name, const QString& exec = QStringLiteral("true")) const {
        const QString path = dir.path() + QStringLiteral("/tarvik-test-%1.desktop").arg(name);
        writeFile(path, QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nExec=%2\n")
                            .arg(name, exec)
                            .toUtf8());
        return {name, path, QStringLiteral("tarvik-test-%1.desktop").arg(name)};
    }
    // An app whose entry is gone from its path and from every applications folder.
    AppEntry removed(const QString& name) const {
        return {name, dir.path() + QStringLiteral("/gone.desktop"),
                QStringLiteral("tarvik-test-never-installed-%1.desktop").arg(name)};
    }
};

AppFolder folderOf(std::vector<AppEntry> apps) {
    AppFolder folder;
    folder.id = QUuid::createUuid();
    folder.name = QStringLiteral("Work");
    folder.apps = std::move(apps);
    return folder;
}

QToolButton* tileAt(FolderPopup& popup, int row, int column) {
    auto* grid = popup.findChild<QGridLayout*>();
    QLayoutItem* item = grid != nullptr ? grid->itemAtPosition(row, column) : nullptr;
    return item != nullptr ? qobject_cast<QToolButton*>(item->widget()) : nullptr;
}

bool showsText(const QWidget& widget, const QString& text) {
    for (const QLabel* label : widget.findChildren<QLabel*>()) {
        if (label->isVisibleTo(&widget) && label->text() == text) {
            return true;
        }
    }
    return false;
}

// A stand-in for the tarvik program beside the helper: a real script that writes down the
// link it was given.
struct RecordingTarvik {
    QTemporaryDir dir;
    QString program() const { return dir.path() + QStringLiteral("/tarvik"); }
    QString received() const { return QString::fromUtf8(readAll(dir.path() + "/link")).trimmed(); }

    RecordingTarvik() {
        writeFile(
            program(),
            QStringLiteral(
                "#!/bin/sh\nprintf '%s\\n' \"$*\" > '%1/link.tmp' && mv '%1/link.tmp' '%1/link'\n")
                .arg(dir.path())
                .toUtf8());
        QFile::setPermissions(program(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void forget() const { QFile::remove(dir.path() + "/link"); }
};

} // namespace

TEST(FolderPopup, ShowsTheAppsInFolderOrderFourToARowAndMovesWithTheArrows) {
    Entries entries;
    const AppFolder folder =
        folderOf({entries.app("Zed"), entries.app("Alpha"), entries.removed("Old Editor"),
                  entries.app("Mail"), entries.app("Browser")});
    FolderPopup popup(QStringLiteral("/nonexistent/tarvik"));
    popup.showFolder(folder);
    popup.show();

    const QStringList names{"Zed", "Alpha", "Old Editor (not installed)", "Mail", "Browser"};
    for (int i = 0; i < names.size(); ++i) {
        QToolButton* tile = tileAt(popup, i / 4, i % 4);
        ASSERT_NE(tile, nullptr) << i;
        EXPECT_EQ(tile->accessibleName(), names[i]);
    }
    EXPECT_EQ(tileAt(popup, 1, 1), nullptr);
    EXPECT_TRUE(tileAt(popup, 0, 2)->text().endsWith("\n(not installed)"));
    EXPECT_FALSE(tileAt(popup, 0, 0)->text().contains("not installed"));
    EXPECT_EQ(popup.windowTitle(), "Work");

    // The first app has the keyboard; the arrows walk the grid and stop at its edges.
    EXPECT_EQ(popup.focusWidget(), tileAt(popup, 0, 0));
    QTest::keyClick(tileAt(popup, 0, 0), Qt::Key_Right);
    EXPECT_EQ(popup.focusWidget(), tileAt(popup, 0, 1));
    QTest::keyClick(tileAt(popup, 0, 1), Qt::Key_Up);
    EXPECT_EQ(popup.focusWidget(), tileAt(popup, 0, 1));
    QTest::keyClick(tileAt(popup, 0, 1), Qt::Key_Left);
    QTest::keyClick(tileAt(popup, 0, 0), Qt::Key_Down);
    EXPECT_EQ(popup.focusWidget(), tileAt(popup, 1, 0));

    // An app that is gone says so instead of failing to start.
    QTest::keyClick(tileAt(popup, 0, 2), Qt::Key_Return);
    EXPECT_TRUE(popup.message().startsWith("Old Editor is not installed any more."))
        << popup.message().toStdString();
    EXPECT_TRUE(popup.isVisible());
}

TEST(FolderPopup, SaysWhenTheFolderIsEmptyOrItsFileMissingOrDamaged) {
    FolderPopup popup(QStringLiteral("/nonexistent/tarvik"));
    popup.showFolder(folderOf({}));
    EXPECT_TRUE(showsText(popup, "This folder is empty. Add apps in Tarvik."));
    EXPECT_EQ(popup.findChild<QToolButton*>(), nullptr);
    auto* open = popup.findChild<QPushButton*>();
    ASSERT_NE(open, nullptr);
    EXPECT_EQ(open->text(), "Open in Tarvik");

    QTemporaryDir dir;
    const QString missing = dir.path() + "/Work.json";
    const auto gone = readFolderFile(missing);
    EXPECT_FALSE(gone.folder);
    EXPECT_TRUE(gone.problem.startsWith("This folder's file is missing: " + missing + "."))
        << gone.problem.toStdString();

    for (const QByteArray& damage :
         {QByteArray("{\"id\": \"6F1C2B9A-3D4E"), QByteArray("[]"), QByteArray("\x00\xff", 2),
          QByteArray("{\"name\": \"no id\"}")}) {
        writeFile(missing, damage);
        const auto damaged = readFolderFile(missing);
        EXPECT_FALSE(damaged.folder) << damage.toStdString();
        EXPECT_TRUE(damaged.problem.startsWith("This folder's file is damaged: " + missing + "."))
            << damaged.problem.toStdString();
    }
    popup.showProblem(readFolderFile(missing).problem);
    EXPECT_EQ(popup.message(), readFolderFile(missing).problem);
    EXPECT_TRUE(showsText(popup, popup.message()));
    EXPECT_EQ(popup.findChild<QToolButton*>(), nullptr);

    writeFile(missing, tarvik::encodeFolder(folderOf({})));
    const auto good = readFolderFile(missing);
    ASSERT_TRUE(good.folder);
    EXPECT_EQ(good.folder->name, "Work");
    EXPECT_TRUE(good.problem.isEmpty());
}

TEST(FolderPopup, ShowsALaunchFailureAndHandsItsLinksToTarvik) {
    Entries entries;
    const AppFolder folder =
        folderOf({entries.app("Broken", "/nonexistent/tarvik-test-program"), entries.app("Mail")});
    RecordingTarvik tarvik;
    FolderPopup popup(tarvik.program());
    popup.showFolder(folder);
    popup.show();

    QTest::mouseClick(tileAt(popup, 0, 0), Qt::LeftButton);
    EXPECT_TRUE(popup.message().startsWith("Broken didn't open: "))
        << popup.message().toStdString();
    EXPECT_TRUE(showsText(popup, popup.message()));
    EXPECT_TRUE(popup.isVisible());

    // The context menu's removal names the app by its reference.
    QToolButton* mail = tileAt(popup, 0, 1);
    QContextMenuEvent menuEvent(QContextMenuEvent::Mouse, QPoint(10, 10),
                                mail->mapToGlobal(QPoint(10, 10)));
    QApplication::sendEvent(mail, &menuEvent);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    QStringList shown;
    QAction* remove = nullptr;
    for (QAction* action : menu->actions()) {
        shown << action->text();
        if (action->text() == "Remove from folder") {
            remove = action;
        }
    }
    EXPECT_EQ(shown, (QStringList{"Open", "Remove from folder", "", "Open in Tarvik"}));
    ASSERT_NE(remove, nullptr);
    remove->trigger();
    menu->close();
    ASSERT_TRUE(waitUntil([&] { return !tarvik.received().isEmpty(); }));
    EXPECT_EQ(tarvik.received(), FolderLink::remove(folder.id, "tarvik-test-Mail.desktop"));
    EXPECT_FALSE(popup.isVisible());

    tarvik.forget();
    popup.show();
    popup.findChild<QPushButton*>()->click();
    ASSERT_TRUE(waitUntil([&] { return !tarvik.received().isEmpty(); }));
    EXPECT_EQ(tarvik.received(), FolderLink::open(folder.id));
    EXPECT_FALSE(popup.isVisible());
}

TEST(FolderPopup, OpensAboveThePointerAndStaysOnTheScreen) {
    const QRect screen(0, 0, 1280, 760); // a panel takes the bottom 40 pixels
    const QSize size(474, 262);
    // Room above: centred on the pointer, its bottom edge just above it.
    EXPECT_EQ(FolderPopup::placeNear({640, 700}, size, screen), QPoint(403, 430));
    // A pointer at the left edge, as with a dock on the left: pushed right onto the screen.
    EXPECT_EQ(FolderPopup::placeNear({30, 500}, size, screen), QPoint(0, 230));
    // No room above: below the pointer.
    EXPECT_EQ(FolderPopup::placeNear({1270, 20}, size, screen), QPoint(806, 28));
    // Near the bottom right, never past the panel.
    EXPECT_EQ(FolderPopup::placeNear({1279, 799}, size, screen), QPoint(806, 498));
    // Larger than the screen: its top-left corner stays visible.
    EXPECT_EQ(FolderPopup::placeNear({10, 10}, QSize(2000, 2000), screen), QPoint(0, 0));

    // The grid is centred: one app sits in the middle, a full row starts at the margin.
    EXPECT_EQ(FolderPopup::tileCentre(0, 1, 300).x(), 150);
    EXPECT_EQ(FolderPopup::tileCentre(0, 4, 4 * 108 + 3 * 6 + 24), QPoint(12 + 54, 12 + 50));
    EXPECT_EQ(FolderPopup::tileCentre(5, 8, 4 * 108 + 3 * 6 + 24),
              QPoint(12 + 114 + 54, 12 + 106 + 50));
}
