#include "app/awake/keep_awake_menu.h"
#include "app/awake/keep_awake_panel_page.h"
#include "app/shell/app_models.h"
#include "app/shell/panel_figure.h"
#include "tests/support/app_options.h"
#include "tests/support/private_bus.h"

#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::optionsIn;
using tarvik::test::PrivateBus;
using tarvik::test::TempHome;

namespace {

// The menu's actions by their text; the status line, a disabled action, comes first.
QAction* action(QMenu& menu, const QString& text) {
    for (QAction* a : menu.actions()) {
        if (a->text() == text) {
            return a;
        }
    }
    ADD_FAILURE() << "no action " << text.toStdString();
    return nullptr;
}

template <typename T> T* topLevel(const char* name) {
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w->objectName() == QLatin1String(name) && w->isVisible()) {
            return qobject_cast<T*>(w);
        }
    }
    return nullptr;
}

// The menu over a logind stand-in that grants its locks.
class KeepAwakeMenu : public ::testing::Test {
protected:
    void SetUp() override {
        if (!bus_.isRunning() || !PrivateBus::hasDbusMock() ||
            !bus_.startMock("org.freedesktop.login1", {"--template", "logind"})) {
            GTEST_SKIP() << "needs dbus-daemon and python3-dbusmock";
        }
        auto options = optionsIn(home_);
        options.keepAwakeBuses = KeepAwakeBuses{bus_.connection(), bus_.connection()};
        models_ = std::make_unique<AppModels>(options);
        menu_ = keepAwakeMenu(models_->keepAwake(), models_->keyboardLock(), &tray_);
        status_ = menu_->actions().value(0);
    }

    TempHome home_;
    PrivateBus bus_;
    std::unique_ptr<AppModels> models_;
    QMenu tray_;
    QMenu* menu_ = nullptr;
    QAction* status_ = nullptr;
};

} // namespace

TEST_F(KeepAwakeMenu, OffersTheDurationsAndTheKeyboardLock) {
    EXPECT_EQ(menu_->title(), "Keep Awake");
    ASSERT_NE(status_, nullptr);
    EXPECT_EQ(status_->text(), "Sleep settings apply");
    EXPECT_FALSE(status_->isEnabled());
    EXPECT_FALSE(action(*menu_, "Turn Off")->isVisible());
    QStringList offered;
    for (QAction* a : menu_->actions()) {
        if (!a->isSeparator() && a != status_ && a->isVisible()) {
            offered << a->text();
        }
    }
    EXPECT_EQ(offered,
              (QStringList{"Keep Awake for 15 min", "Keep Awake for 1 h", "Keep Awake for 2 h",
                           "Keep Awake for 4 h", "Keep Awake for 8 h", "Until you turn it off",
                           "Keyboard cleaning…"}));
    EXPECT_EQ(action(*menu_, "Keyboard cleaning…")->toolTip(),
              "Lock every key so you can wipe the keyboard. Press Escape 5 times to unlock.");
}

TEST_F(KeepAwakeMenu, ADurationKeepsAwakeForThatLongAndTurnOffEndsIt) {
    action(*menu_, "Keep Awake for 2 h")->trigger();
    const KeepAwakeState state = models_->keepAwake().state();
    ASSERT_TRUE(state.isActive);
    ASSERT_TRUE(state.until.has_value());
    EXPECT_NEAR(models_->keepAwake().now().secsTo(*state.until), 7200, 5);
    EXPECT_EQ(menu_->title(), "Keep Awake: On");
    EXPECT_TRUE(QRegularExpression("^(\\w+ )?\\d\\d:\\d\\d, then your sleep settings apply$")
                    .match(status_->text())
                    .hasMatch())
        << status_->text().toStdString();

    QAction* off = action(*menu_, "Turn Off");
    ASSERT_TRUE(off->isVisible());
    off->trigger();
    EXPECT_FALSE(models_->keepAwake().state().isActive);
    EXPECT_FALSE(off->isVisible());
    EXPECT_EQ(menu_->title(), "Keep Awake");
    EXPECT_EQ(status_->text(), "Sleep settings apply");
}

TEST_F(KeepAwakeMenu, TheTrayPanelsPageShowsTheStateHeldAndStartsAndStopsIt) {
    KeepAwakePanelPage page(models_->keepAwake());
    auto* start = page.findChild<QPushButton*>("awakeStart");
    auto* off = page.findChild<QPushButton*>("awakeOff");
    ASSERT_NE(start, nullptr);
    ASSERT_NE(off, nullptr);
    EXPECT_EQ(page.state().value(), "Off");
    EXPECT_TRUE(off->isHidden());

    ASSERT_NE(start->menu(), nullptr);
    start->menu()->actions().at(2)->trigger(); // 2 h
    ASSERT_TRUE(models_->keepAwake().state().isActive);
    EXPECT_EQ(page.state().value(), "On");
    EXPECT_EQ(page.state().detail(), status_->text() + "\nKept awake by hand");
    EXPECT_FALSE(off->isHidden());

    // The menu's Turn Off and the page's agree, whichever is used.
    action(*menu_, "Turn Off")->trigger();
    EXPECT_EQ(page.state().value(), "Off");
    start->menu()->actions().last()->trigger();
    EXPECT_EQ(menu_->title(), "Keep Awake: On");
    off->click();
    EXPECT_FALSE(models_->keepAwake().state().isActive);
    EXPECT_EQ(page.state().value(), "Off");
    EXPECT_EQ(menu_->title(), "Keep Awake");
}

TEST_F(KeepAwakeMenu, UntilYouTurnItOffHasNoEnd) {
    action(*menu_, "Until you turn it off")->trigger();
    EXPECT_TRUE(models_->keepAwake().state().isActive);
    EXPECT_FALSE(models_->keepAwake().state().until.has_value());
    EXPECT_EQ(status_->text(), "Until you turn it off");
}

TEST_F(KeepAwakeMenu, AKeyboardLockThatFailsFromTheTraySaysWhyWithNoWindowOpen) {
    // Offscreen there is no keyboard to take and no input device to open.
    ASSERT_EQ(topLevel<QMessageBox>("keyboardLockFailure"), nullptr);
    action(*menu_, "Keyboard cleaning…")->trigger();
    EXPECT_FALSE(models_->keyboardLock().isLocked());
    auto* box = topLevel<QMessageBox>("keyboardLockFailure");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Couldn't lock the keyboard");
    EXPECT_EQ(box->informativeText(),
              "Tarvik needs Accessibility access to block key presses. Turn it on by adding "
              "yourself to the “input” group (sudo usermod -aG input $USER) and signing in again, "
              "then try again.");

    QPushButton* open = nullptr;
    for (QAbstractButton* b : box->buttons()) {
        if (b->text() == "Open Accessibility Settings") {
            open = qobject_cast<QPushButton*>(b);
        }
    }
    ASSERT_NE(open, nullptr);
    open->click();
    auto* help = topLevel<QMessageBox>("accessibilityHelp");
    ASSERT_NE(help, nullptr);
    EXPECT_TRUE(help->text().contains("\"input\" group")) << help->text().toStdString();
    help->close();
}
