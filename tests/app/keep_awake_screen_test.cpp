#include "app/awake/keep_awake_menu.h"
#include "app/awake/keep_awake_screen.h"
#include "app/awake/schedule_editor.h"
#include "app/shell/app_models.h"
#include "core/awake/keep_awake_schedule_store.h"
#include "tests/support/app_options.h"
#include "tests/support/private_bus.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimeEdit>
#include <QTreeWidget>
#include <algorithm>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::optionsIn;
using tarvik::test::PrivateBus;
using tarvik::test::TempHome;
using tarvik::test::withoutLogind;

namespace {

template <typename T> T* child(QWidget& w, const char* name) {
    auto* c = w.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(c, nullptr) << name;
    return c;
}

QString labelText(QWidget& w, const char* name) {
    auto* l = child<QLabel>(w, name);
    return l != nullptr && l->isVisibleTo(&w) ? l->text() : QString();
}

ScheduleEditor* openEditor(QWidget& screen, const char* button) {
    QTest::mouseClick(child<QPushButton>(screen, button), Qt::LeftButton);
    auto editors = screen.findChildren<ScheduleEditor*>();
    return editors.isEmpty() ? nullptr : editors.back();
}

} // namespace

TEST(KeepAwakeScreen, TheSwitchKeepsAwakeThroughLogindAndSaysUntilWhen) {
    PrivateBus bus;
    if (!bus.isRunning() || !PrivateBus::hasDbusMock()) {
        GTEST_SKIP() << "needs dbus-daemon and python3-dbusmock";
    }
    ASSERT_TRUE(bus.startMock("org.freedesktop.login1", {"--template", "logind"}));
    TempHome home;
    auto options = optionsIn(home);
    options.keepAwakeBuses = KeepAwakeBuses{bus.connection(), bus.connection()};
    AppModels models(options);
    KeepAwakeScreen screen(models.keepAwake(), models.keyboardLock());
    EXPECT_EQ(labelText(screen, "awakeStatus"), "Sleeping normally");
    EXPECT_EQ(labelText(screen, "awakeReason"), "Your computer follows its own sleep settings");
    const auto labels = screen.findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(labels, [](QLabel* l) {
        return l->text() == "Works while Tarvik is in the tray. Closing a laptop lid still sleeps "
                            "it unless the lid option above is on.";
    }));
    // logind holds the lid and polkit may ask; Tarvik itself asks for no password.
    EXPECT_EQ(labelText(screen, "lidDescription"),
              "Your system may ask for your password when keeping awake starts");

    auto* toggle = child<QPushButton>(screen, "awakeToggle");
    QTest::mouseClick(toggle, Qt::LeftButton); // an hour, the default
    EXPECT_TRUE(models.keepAwake().isAssertionHeld());
    EXPECT_TRUE(toggle->isChecked());
    const QDateTime end = *models.keepAwake().state().until;
    EXPECT_NEAR(QDateTime::currentDateTime().secsTo(end), 3600, 5);
    EXPECT_TRUE(QRegularExpression("^(\\w+ )?\\d\\d:\\d\\d, then your sleep settings apply$")
                    .match(labelText(screen, "awakeStatus"))
                    .hasMatch())
        << labelText(screen, "awakeStatus").toStdString();
    EXPECT_EQ(labelText(screen, "awakeReason"), "Kept awake by hand");
    EXPECT_EQ(labelText(screen, "awakeError"), "");

    QTest::mouseClick(toggle, Qt::LeftButton);
    EXPECT_FALSE(models.keepAwake().isAssertionHeld());
    EXPECT_FALSE(toggle->isChecked());
    EXPECT_EQ(labelText(screen, "awakeStatus"), "Sleeping normally");
}

TEST(KeepAwakeScreen, WithoutLogindItSaysWhyAndTheLockFailureIsExplained) {
    TempHome home;
    AppModels models(withoutLogind(home));
    KeepAwakeScreen screen(models.keepAwake(), models.keyboardLock());
    QMenu tray;
    QMenu* menu = keepAwakeMenu(models.keepAwake(), models.keyboardLock(), &tray);
    auto* toggle = child<QPushButton>(screen, "awakeToggle");
    QTest::mouseClick(toggle, Qt::LeftButton);
    EXPECT_TRUE(labelText(screen, "awakeError").startsWith("Couldn't keep the computer awake"));
    // Nothing is held, so nothing says On: not the button, the status, the tray or Smart Scan.
    EXPECT_FALSE(toggle->isChecked());
    EXPECT_EQ(toggle->text(), "Off");
    EXPECT_EQ(labelText(screen, "awakeStatus"), "Sleeping normally");
    EXPECT_EQ(menu->title(), "Keep Awake");
    EXPECT_FALSE(models.keepAwake().state().isActive);

    // Offscreen there is no keyboard to take: the lock fails and says so, leaving nothing held.
    auto* open = child<QPushButton>(screen, "openAccessibilitySettings");
    EXPECT_FALSE(open->isVisibleTo(&screen));
    QTest::mouseClick(child<QPushButton>(screen, "lockKeyboard"), Qt::LeftButton);
    EXPECT_FALSE(models.keyboardLock().isLocked());
    EXPECT_EQ(labelText(screen, "lockFailure"),
              "<b>Couldn't lock the keyboard</b><br>Tarvik needs Accessibility access to block key "
              "presses. Turn it on by adding yourself to the “input” group (sudo usermod -aG "
              "input $USER) and signing in again, then try again.");
    EXPECT_EQ(child<QPushButton>(screen, "lockKeyboard")->text(), "Try &Again");
    ASSERT_TRUE(open->isVisibleTo(&screen));
    EXPECT_EQ(open->text(), "Open Accessibility Settings");
    EXPECT_EQ(labelText(screen, "accessibilityHelp"), "");
    QTest::mouseClick(open, Qt::LeftButton);
    EXPECT_TRUE(labelText(screen, "accessibilityHelp").contains("\"input\" group"))
        << labelText(screen, "accessibilityHelp").toStdString();
    // Without input devices to hold, the screen says what the lock can't block.
    EXPECT_TRUE(labelText(screen, "keyboardAccess").startsWith("Some desktop shortcuts"));
}

TEST(KeepAwakeScreen, SchedulesAreEditedCheckedStoredAndRemoved) {
    TempHome home;
    AppModels models(withoutLogind(home));
    KeepAwakeScreen screen(models.keepAwake(), models.keyboardLock());
    auto* list = child<QTreeWidget>(screen, "scheduleList");
    // No schedules: a sentence instead of an empty table.
    EXPECT_TRUE(list->isHidden());
    EXPECT_FALSE(child<QLabel>(screen, "noSchedules")->isHidden());

    ScheduleEditor* editor = openEditor(screen, "addSchedule");
    ASSERT_NE(editor, nullptr);
    auto* ok = editor->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
    auto* note = editor->findChild<QLabel*>("scheduleNote");
    editor->findChild<QLineEdit*>()->setText("Late render");
    editor->findChild<QTimeEdit*>("startTime")->setTime(QTime(22, 0));
    editor->findChild<QTimeEdit*>("endTime")->setTime(QTime(22, 0));
    EXPECT_EQ(note->text(), "Start and end must differ.");
    EXPECT_FALSE(ok->isEnabled());
    editor->findChild<QTimeEdit*>("endTime")->setTime(QTime(6, 0));
    EXPECT_EQ(note->text(), "Ends the next day.");
    for (int d = 1; d <= 7; ++d) {
        editor->findChild<QCheckBox*>(QStringLiteral("day%1").arg(d))->setChecked(false);
    }
    EXPECT_FALSE(ok->isEnabled()); // no days
    editor->findChild<QCheckBox*>("day1")->setChecked(true);
    ASSERT_TRUE(ok->isEnabled());
    QTest::mouseClick(ok, Qt::LeftButton);
    QCoreApplication::processEvents(); // the list is rebuilt after the change

    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_FALSE(list->isHidden());
    EXPECT_TRUE(child<QLabel>(screen, "noSchedules")->isHidden());
    EXPECT_EQ(list->topLevelItem(0)->text(0), "Late render");
    EXPECT_EQ(list->topLevelItem(0)->text(1), "Sun");
    EXPECT_TRUE(list->topLevelItem(0)->text(2).contains("Ends the next day."));

    // Switching it off from its check box is stored, and another process reads it back.
    list->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    QCoreApplication::processEvents();
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->checkState(0), Qt::Unchecked);
    Preferences reread(home.config() + "/Tarvik/Tarvik.conf");
    const auto stored =
        KeepAwakeScheduleStore::decode(reread.value(pref::kKeepAwakeSchedules).toString().toUtf8());
    ASSERT_EQ(stored.schedules.size(), 1u);
    EXPECT_FALSE(stored.schedules[0].isEnabled);
    EXPECT_EQ(stored.schedules[0].startMinutes, 22 * 60);

    // Editing keeps the schedule's identity; removing takes it away.
    list->setCurrentItem(list->topLevelItem(0));
    editor = openEditor(screen, "editSchedule");
    ASSERT_NE(editor, nullptr);
    editor->findChild<QLineEdit*>()->setText("Renders");
    QTest::mouseClick(editor->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                      Qt::LeftButton);
    QCoreApplication::processEvents();
    ASSERT_EQ(models.keepAwake().schedules().size(), 1u);
    EXPECT_EQ(models.keepAwake().schedules()[0].name, "Renders");
    EXPECT_EQ(models.keepAwake().schedules()[0].id, stored.schedules[0].id);
    list->setCurrentItem(list->topLevelItem(0));
    QTest::mouseClick(child<QPushButton>(screen, "removeSchedule"), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(list->topLevelItemCount(), 0);
    EXPECT_TRUE(models.keepAwake().schedules().empty());
}

TEST(KeepAwakeScreen, DamagedSchedulesAreReportedNotApplied) {
    TempHome home;
    {
        Preferences prefs(home.config() + "/Tarvik/Tarvik.conf");
        prefs.setValue(pref::kKeepAwakeSchedules, "[{\"id\":");
        prefs.sync();
    }
    AppModels models(withoutLogind(home));
    KeepAwakeScreen screen(models.keepAwake(), models.keyboardLock());
    EXPECT_TRUE(labelText(screen, "schedulesError").contains("couldn't be read"));
    EXPECT_EQ(child<QTreeWidget>(screen, "scheduleList")->topLevelItemCount(), 0);
    EXPECT_FALSE(models.keepAwake().state().isActive);
}
