// The keyboard lock on a real X server (run under Xvfb): synthetic key presses from xdotool
// must be swallowed while locked, five quick Escapes unlock, a key in between starts the
// count again and a modifier does not.
#include "app/awake/keyboard_lock.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QTest>
#include <gtest/gtest.h>

using tarvik::KeyboardLock;

namespace {

// Runs xdotool while the event loop keeps going, then lets the events arrive.
void xdotool(const QStringList& args) {
    QProcess p;
    p.start("xdotool", args);
    ASSERT_TRUE(p.waitForStarted(5000));
    tarvik::test::waitUntil([&] { return p.state() == QProcess::NotRunning; }, 10000);
    ASSERT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    QTest::qWait(300);
}

void keys(const QStringList& names) {
    xdotool(QStringList{"key", "--delay", "60"} + names);
}

// The count of Escapes on the lock's cover.
QLabel* overlayCount() {
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w->objectName() == QLatin1String("keyboardLockOverlay") && w->isVisible()) {
            return w->findChild<QLabel*>("escapeCount");
        }
    }
    return nullptr;
}

} // namespace

TEST(KeyboardLockOnX, SwallowsKeysUntilFiveQuickEscapes) {
    QLineEdit field;
    field.setWindowTitle("typing target");
    field.show();
    field.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&field));
    xdotool({"windowfocus", "--sync", QString::number(field.winId())});
    keys({"a", "b"});
    ASSERT_EQ(field.text(), "ab") << "the X server should deliver keys before the lock";

    QTemporaryDir noDevices; // the test never takes the machine's own keyboard
    KeyboardLock lock(noDevices.path());
    ASSERT_TRUE(lock.begin()) << lock.failureDetail().toStdString();
    EXPECT_TRUE(lock.isLocked());
    EXPECT_FALSE(lock.holdsDevices());

    keys({"x", "y", "Return"});
    EXPECT_EQ(field.text(), "ab");
    EXPECT_TRUE(lock.isLocked());

    keys({"Escape", "Escape"});
    EXPECT_EQ(lock.escapeCount(), 2);
    auto* dots = overlayCount();
    ASSERT_NE(dots, nullptr);
    EXPECT_TRUE(dots->text().endsWith("● ● ○ ○ ○")) << dots->text().toStdString();
    // After a pause the next press starts afresh, and the dots say so without one.
    EXPECT_TRUE(QTest::qWaitFor([&] { return lock.escapeCount() == 0; }, 20000));
    EXPECT_TRUE(dots->text().endsWith("○ ○ ○ ○ ○")) << dots->text().toStdString();
    keys({"Escape", "Escape"});
    EXPECT_EQ(lock.escapeCount(), 2);
    keys({"z"});
    EXPECT_EQ(lock.escapeCount(), 0);
    keys({"Escape", "Escape", "Escape", "Escape", "z", "Escape"});
    EXPECT_TRUE(lock.isLocked()); // the key in between started the count again
    EXPECT_EQ(lock.escapeCount(), 1);
    // Modifiers are not keys in between: the count goes on to the fifth Escape. The "z" first
    // starts the count afresh.
    keys({"z", "Escape", "Escape", "Escape", "Escape", "Shift_L", "Control_L", "Alt_L", "Super_L",
          "ISO_Level3_Shift", "Caps_Lock", "Caps_Lock", "Escape"});
    EXPECT_FALSE(lock.isLocked());
    EXPECT_EQ(field.text(), "ab");

    // Unlocked, the keyboard is the desktop's again.
    xdotool({"windowfocus", "--sync", QString::number(field.winId())});
    keys({"c"});
    EXPECT_EQ(field.text(), "abc");
}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
