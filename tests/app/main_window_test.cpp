#include "app/shell/app_models.h"
#include "app/shell/empty_state.h"
#include "app/shell/gui_shell.h"
#include "app/shell/main_window.h"
#include "app/shell/sidebar_model.h"
#include "app/shell/tray_item.h"
#include "app/shell/unavailable_screen.h"
#include "core/sys/xdg_paths.h"
#include "tests/support/app_options.h"
#include "tests/support/shown_text.h"
#include "tests/support/temp_home.h"

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QScrollArea>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::optionsIn;
using tarvik::test::TempHome;

namespace {

QWidget* screenInside(QWidget* scroll) {
    auto* area = qobject_cast<QScrollArea*>(scroll);
    return area ? area->widget() : nullptr;
}

} // namespace

TEST(MainWindow, SidebarListsTheSeventeenSectionsInOrderUnderTheirGroups) {
    TempHome home;
    AppModels models(optionsIn(home));
    MainWindow window(models);
    EXPECT_EQ(window.windowTitle(), "Tarvik");
    SidebarModel* model = window.sidebarModel();
    QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::Fatal);

    QStringList rows;
    int sections = 0;
    for (int r = 0; r < model->rowCount(); ++r) {
        const QModelIndex i = model->index(r);
        const bool heading = i.data(SidebarModel::IsHeadingRole).toBool();
        const bool divider = i.data(SidebarModel::IsDividerRole).toBool();
        rows << (divider   ? QStringLiteral("—")
                 : heading ? "[" + i.data().toString() + "]"
                           : i.data().toString());
        if (heading || divider) {
            EXPECT_FALSE(model->flags(i) & Qt::ItemIsSelectable) << r;
        } else {
            EXPECT_TRUE(model->flags(i) & Qt::ItemIsSelectable) << r;
            EXPECT_EQ(i.data(SidebarModel::SectionRole).toInt(), sections++);
            EXPECT_FALSE(i.data(Qt::DecorationRole).value<QIcon>().isNull()) << r;
        }
    }
    EXPECT_EQ(sections, 17);
    EXPECT_EQ(rows,
              (QStringList{"Smart Scan",     "[Clean]",        "System Junk", "Large & Old Files",
                           "Duplicates",     "Developer Junk", "[Analyze]",   "Space Lens",
                           "System Monitor", "Dev Servers",    "Agents",      "Speed Test",
                           "Device Check",   "System Info",    "[Manage]",    "Uninstaller",
                           "Homebrew",       "Dock Folders",   "Keep Awake",  "—",
                           "Settings"}));

    // Sections without their screen yet are listed, dimmed, and say why; they still open, to
    // say so on their page.
    for (int r = 0; r < model->rowCount(); ++r) {
        const auto section = model->sectionAt(model->index(r));
        if (!section) {
            continue;
        }
        const QModelIndex i = model->index(r);
        const bool built = hasScreen(*section);
        EXPECT_EQ(i.data(SidebarModel::IsAvailableRole).toBool(), built) << r;
        EXPECT_EQ(i.data(Qt::ToolTipRole).toString(),
                  built ? QString() : QStringLiteral("Coming in a later version"))
            << r;
    }
    for (AppSection s :
         {AppSection::ProjectJunk, AppSection::SpaceLens, AppSection::DevServers,
          AppSection::DeviceCheck, AppSection::SystemInfo, AppSection::Uninstaller}) {
        EXPECT_FALSE(hasScreen(s));
    }
    EXPECT_TRUE(hasScreen(AppSection::DockFolders));
}

TEST(MainWindow, HomebrewUpdatesShowAsABadgeUnlessSwitchedOff) {
    TempHome home;
    AppModels models(optionsIn(home));
    MainWindow window(models);
    const QModelIndex brew = window.sidebarModel()->indexOf(AppSection::Homebrew);
    EXPECT_EQ(brew.data(SidebarModel::BadgeRole).toInt(), 0);
    models.brewUpdates().setOutdatedCount(3);
    EXPECT_EQ(brew.data().toString(), "Homebrew");
    EXPECT_EQ(brew.data(SidebarModel::BadgeRole).toInt(), 3);
    EXPECT_EQ(brew.data(Qt::AccessibleTextRole).toString(), "Homebrew, 3 updates");
    models.brewUpdates().setOutdatedCount(1);
    EXPECT_EQ(brew.data(Qt::AccessibleTextRole).toString(), "Homebrew, 1 update");
    models.preferences().setValue(pref::kHomebrewShowBadge, false);
    EXPECT_EQ(brew.data(SidebarModel::BadgeRole).toInt(), 0);
}

TEST(MainWindow, KeyboardAndMenuNavigationFollowOneSelection) {
    TempHome home;
    AppModels models(optionsIn(home));
    MainWindow window(models);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    Navigator& nav = models.navigator();
    EXPECT_EQ(screenInside(window.currentScreen())->objectName(), "overview");

    QTest::keyClick(&window, Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(nav.selection(), AppSection::LargeFiles);
    EXPECT_EQ(screenInside(window.currentScreen())->objectName(), "largeFiles");
    EXPECT_EQ(window.sidebar()->currentIndex(),
              window.sidebarModel()->indexOf(AppSection::LargeFiles));

    QTest::keyClick(&window, Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(nav.selection(), AppSection::Settings);
    QTest::keyClick(&window, Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(nav.selection(), AppSection::KeepAwake);
    QTest::keyClick(&window, Qt::Key_1, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(nav.selection(), AppSection::SpeedTest);

    // Arrow keys in the sidebar step over the group headings.
    nav.select(AppSection::ProjectJunk);
    window.sidebar()->setFocus();
    QTest::keyClick(window.sidebar(), Qt::Key_Down);
    EXPECT_EQ(nav.selection(), AppSection::SpaceLens);
    QTest::keyClick(window.sidebar(), Qt::Key_Up);
    EXPECT_EQ(nav.selection(), AppSection::ProjectJunk);

    // Something else (the tray menu, a tile) selecting a section moves the sidebar too.
    nav.select(AppSection::Homebrew);
    EXPECT_EQ(window.sidebar()->currentIndex(),
              window.sidebarModel()->indexOf(AppSection::Homebrew));
}

TEST(MainWindow, SectionsNotBuiltYetSaySoAndOfferNothing) {
    TempHome home;
    AppModels models(optionsIn(home));
    MainWindow window(models);
    for (AppSection s : {AppSection::SpaceLens, AppSection::DevServers, AppSection::Uninstaller}) {
        models.navigator().select(s);
        QWidget* screen = screenInside(window.currentScreen());
        ASSERT_NE(screen, nullptr);
        auto* message = screen->findChild<EmptyState*>("unavailableMessage");
        ASSERT_NE(message, nullptr);
        EXPECT_EQ(message->sentence(), UnavailableScreen::message(s));
        EXPECT_TRUE(screen->findChildren<QAbstractButton*>().isEmpty());
    }
    EXPECT_EQ(UnavailableScreen::message(AppSection::ProjectJunk),
              "Developer Junk is not available in this version of Tarvik yet.");
}

TEST(MainWindow, SectionTitlesInTheGoMenusShowAsWrittenAndTakeNoShortcutLetter) {
    TempHome home;
    AppModels models(optionsIn(home));
    MainWindow window(models);
    TrayItem tray(models);
    QMenu* windowGo = nullptr;
    for (QAction* a : window.menuBar()->actions()) {
        if (test::shownText(a->text()) == "Go") {
            windowGo = a->menu();
        }
    }
    QMenu* trayGo = nullptr;
    for (QAction* a : tray.menu()->actions()) {
        if (a->text() == "Go To") {
            trayGo = a->menu();
        }
    }
    ASSERT_NE(windowGo, nullptr);
    ASSERT_NE(trayGo, nullptr);
    for (QMenu* menu : {windowGo, trayGo}) {
        QStringList shown;
        for (QAction* a : menu->actions()) {
            if (!a->isSeparator()) {
                shown << test::shownText(a->text());
                // "&" in a title ("Large & Old Files") would make Alt+Space the shortcut.
                EXPECT_TRUE(QKeySequence::mnemonic(a->text()).isEmpty()) << a->text().toStdString();
            }
        }
        QStringList titles;
        for (const auto& s : allSections()) {
            titles << QString::fromUtf8(s.title.data(), static_cast<qsizetype>(s.title.size()));
        }
        EXPECT_EQ(shown.mid(0, titles.size()), titles);
        EXPECT_TRUE(shown.contains("Large & Old Files"));
        // The sections not built yet are listed dimmed, saying why, and lead nowhere.
        for (QAction* a : menu->actions()) {
            const auto section =
                std::find_if(allSections().begin(), allSections().end(), [&](const SectionInfo& s) {
                    return test::shownText(a->text()) ==
                           QString::fromUtf8(s.title.data(),
                                             static_cast<qsizetype>(s.title.size()));
                });
            if (a->isSeparator() || section == allSections().end()) {
                continue;
            }
            EXPECT_EQ(a->isEnabled(), hasScreen(section->section)) << a->text().toStdString();
            EXPECT_EQ(a->toolTip() == "Coming in a later version", !hasScreen(section->section))
                << a->text().toStdString();
        }
    }
}

TEST(GuiShell, ClosingTheWindowNeverLeavesTarvikUnreachable) {
    TempHome home;
    AppModels models(optionsIn(home));
    models.preferences().setValue(pref::kHideDockIcon, true);
    GuiShell shell(models, /*isLoginLaunch=*/false);
    shell.start();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&shell.window()));
    // The offscreen platform has no tray: hiding the taskbar entry would lose the program,
    // so closing keeps it minimised.
    ASSERT_FALSE(TrayItem::trayAvailable());
    shell.window().close();
    EXPECT_FALSE(shell.window().isHidden());
    EXPECT_TRUE(shell.window().isMinimized());
    EXPECT_EQ(shell.policy(), ActivationPolicy::Regular);
    shell.openWindow();
    EXPECT_FALSE(shell.window().isMinimized());
}

TEST(GuiShell, QuitEndsTheProgramFromTheWindowFromCtrlQAndFromTheTray) {
    enum class From { Menu, Shortcut, Tray };
    for (From from : {From::Menu, From::Shortcut, From::Tray}) {
        TempHome home;
        AppModels models(optionsIn(home));
        // The tray's Quit is tried with the window put away, as after a login start.
        GuiShell shell(models, /*isLoginLaunch=*/from == From::Tray);
        shell.start();
        QTimer::singleShot(0, &shell, [&] {
            switch (from) {
            case From::Menu:
                shell.window().findChild<QAction*>("quit")->trigger();
                break;
            case From::Shortcut:
                // A shortcut reaches only the active window.
                QApplication::setActiveWindow(&shell.window());
                QTest::keyClick(&shell.window(), Qt::Key_Q, Qt::ControlModifier);
                break;
            case From::Tray:
                shell.tray().menu()->findChild<QAction*>("quit")->trigger();
                break;
            }
        });
        // Were the quit dropped, the loop would run on until this stops it.
        QTimer::singleShot(10000, [] { QCoreApplication::exit(99); });
        EXPECT_EQ(QApplication::exec(), 0) << static_cast<int>(from);
    }
}

TEST(GuiShell, ASilentLoginStartWithoutATrayStillGivesAWindow) {
    TempHome home;
    AppModels models(optionsIn(home));
    GuiShell shell(models, /*isLoginLaunch=*/true);
    shell.start();
    EXPECT_TRUE(shell.window().isVisible());
    EXPECT_TRUE(shell.window().isMinimized());
}
