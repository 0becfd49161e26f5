#include "app/settings/settings_screen.h"
#include "app/shell/wheel_guard.h"
#include "core/settings/preferences.h"
#include "core/shell/login_item.h"
#include "core/sys/xdg_paths.h"
#include "tests/support/temp_home.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::TempHome;

TEST(SettingsScreen, RowsWriteTheStoreAndFollowChangesMadeElsewhere) {
    TempHome home;
    Preferences prefs;
    LoginItem login(xdg::autostartDir(), "/usr/bin/tarvik");
    SettingsScreen screen(prefs, login);

    auto* tray = screen.findChild<QCheckBox*>("showMenuBarExtra");
    ASSERT_NE(tray, nullptr);
    EXPECT_TRUE(tray->isChecked());
    tray->click();
    EXPECT_FALSE(prefs.showMenuBarExtra());
    EXPECT_TRUE(prefs.isStored(pref::kShowMenuBarExtra));

    auto* stats = screen.findChild<QCheckBox*>("menuBarShowsStats");
    auto* battery = screen.findChild<QCheckBox*>("stat_battery");
    auto* cpu = screen.findChild<QCheckBox*>("stat_cpu");
    ASSERT_TRUE(stats && battery && cpu);
    EXPECT_TRUE(cpu->isChecked());
    EXPECT_FALSE(battery->isEnabled()); // readings are chosen only while they are shown
    stats->click();
    EXPECT_TRUE(battery->isEnabled());
    battery->click();
    EXPECT_EQ(prefs.value(pref::kMenuBarStats).toString(), "cpu,memory,battery");
    cpu->click();
    EXPECT_EQ(prefs.value(pref::kMenuBarStats).toString(), "memory,battery");

    auto* interval = screen.findChild<QDoubleSpinBox*>("monitorInterval");
    ASSERT_NE(interval, nullptr);
    EXPECT_DOUBLE_EQ(interval->minimum(), 1.0);
    EXPECT_DOUBLE_EQ(interval->maximum(), 10.0);
    interval->setValue(3.5);
    EXPECT_DOUBLE_EQ(prefs.monitorInterval(), 3.5);

    // Another writer (the tray, the command line) changes a key: the row follows.
    auto* hide = screen.findChild<QCheckBox*>("hideDockIcon");
    ASSERT_NE(hide, nullptr);
    EXPECT_EQ(hide->text(), "Hide the taskbar entry while the window is closed"); // no Dock here
    prefs.setValue(pref::kHideDockIcon, true);
    EXPECT_TRUE(hide->isChecked());
}

TEST(SettingsScreen, TheWheelScrollsPastValuesAndChangesOnlyTheControlInFocus) {
    TempHome home;
    Preferences prefs;
    LoginItem login(xdg::autostartDir(), "/usr/bin/tarvik");
    WheelGuard guard;
    qApp->installEventFilter(&guard);
    QScrollArea page;
    page.setWidgetResizable(true);
    auto* screen = new SettingsScreen(prefs, login);
    page.setWidget(screen);
    page.resize(600, 300);
    page.show();
    auto* mode = screen->findChild<QComboBox*>(QString::fromUtf8(pref::kFileRemovalMode.data()));
    auto* interval = screen->findChild<QDoubleSpinBox*>("monitorInterval");
    ASSERT_TRUE(mode && interval);
    EXPECT_EQ(mode->focusPolicy(), Qt::StrongFocus); // a wheel gives it no focus
    const QString modeBefore = prefs.value(pref::kFileRemovalMode).toString();
    const double intervalBefore = prefs.monitorInterval();
    auto turn = [](QWidget* w) {
        const QPointF at(w->width() / 2.0, w->height() / 2.0);
        QWheelEvent down(at, w->mapToGlobal(at), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(w, &down);
    };
    const int top = page.verticalScrollBar()->value();
    turn(mode);
    turn(interval);
    EXPECT_EQ(prefs.value(pref::kFileRemovalMode).toString(), modeBefore);
    EXPECT_DOUBLE_EQ(prefs.monitorInterval(), intervalBefore);
    EXPECT_GT(page.verticalScrollBar()->value(), top); // the page scrolled instead

    // With the focus, the wheel is the control's.
    QApplication::setActiveWindow(&page);
    interval->setFocus();
    ASSERT_TRUE(interval->hasFocus());
    turn(interval);
    EXPECT_NE(prefs.monitorInterval(), intervalBefore);
    qApp->removeEventFilter(&guard);
}

TEST(SettingsScreen, StartAtLoginWritesTheEntryAndShowsWhyItFailed) {
    TempHome home;
    Preferences prefs;
    LoginItem login(xdg::autostartDir(), "/usr/bin/tarvik");
    SettingsScreen screen(prefs, login);
    auto* box = screen.findChild<QCheckBox*>("startAtLogin");
    auto* error = screen.findChild<QLabel*>("loginError");
    ASSERT_TRUE(box && error);

    box->click();
    EXPECT_TRUE(QFileInfo::exists(login.entryPath()));
    EXPECT_TRUE(error->isHidden());
    box->click();
    EXPECT_FALSE(QFileInfo::exists(login.entryPath()));

    ASSERT_TRUE(QDir(home.config() + "/autostart").removeRecursively());
    tarvik::test::writeFile(home.config() + "/autostart", "a file where the folder belongs");
    box->click();
    EXPECT_FALSE(box->isChecked()); // the box tells the truth
    EXPECT_FALSE(error->isHidden());
    EXPECT_TRUE(error->text().startsWith("Couldn't turn on Start at login"));
}
