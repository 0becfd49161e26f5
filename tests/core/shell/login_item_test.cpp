#include "core/shell/login_item.h"
#include "core/sys/xdg_paths.h"
#include "tests/support/temp_home.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::readAll;
using tarvik::test::TempHome;
using tarvik::test::writeFile;

TEST(LoginItem, AutostartEntryIsWrittenWithTheLoginFlagAndRemovedAgain) {
    TempHome home;
    LoginItem item(xdg::autostartDir(), "/opt/Tarvik App/tarvik");
    const QString entry = home.config() + "/autostart/org.pellor.tarvik.desktop";
    EXPECT_EQ(item.entryPath(), entry);
    EXPECT_FALSE(item.isEnabled());

    item.setEnabled(true);
    ASSERT_TRUE(QFileInfo::exists(entry));
    EXPECT_TRUE(item.isEnabled());
    const QByteArray text = readAll(entry);
    EXPECT_TRUE(text.startsWith("[Desktop Entry]\n"));
    EXPECT_TRUE(text.contains("\nExec=\"/opt/Tarvik App/tarvik\" --login-item\n")) << text.data();
    EXPECT_TRUE(text.contains("\nType=Application\n"));

    // Turning on again changes nothing; turning off twice is quiet.
    writeFile(entry, text + "X-Kept=1\n");
    item.setEnabled(true);
    EXPECT_TRUE(readAll(entry).contains("X-Kept=1"));
    item.setEnabled(false);
    EXPECT_FALSE(QFileInfo::exists(entry));
    EXPECT_NO_THROW(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
}

TEST(LoginItem, AnEntryTheDesktopDisabledCountsAsOffAndIsReplacedWhenTurnedOn) {
    TempHome home;
    LoginItem item(xdg::autostartDir(), "/usr/bin/tarvik");
    writeFile(item.entryPath(), "[Desktop Entry]\nType=Application\nExec=/usr/bin/tarvik "
                                "--login-item\nHidden=true\n");
    EXPECT_FALSE(item.isEnabled());
    item.setEnabled(true);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_FALSE(readAll(item.entryPath()).contains("Hidden"));

    writeFile(item.entryPath(), "[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n");
    EXPECT_FALSE(item.isEnabled());
}

TEST(LoginItem, AFolderThatCannotBeMadeIsReportedNotIgnored) {
    TempHome home;
    // A plain file where the autostart folder should be: no user, not even root, can mkdir it.
    writeFile(home.config() + "/autostart", "not a folder");
    LoginItem item(xdg::autostartDir(), "/usr/bin/tarvik");
    try {
        item.setEnabled(true);
        FAIL() << "expected LoginItemError";
    } catch (const LoginItemError& e) {
        EXPECT_TRUE(e.message.startsWith("Couldn't turn on Start at login"))
            << e.message.toStdString();
    }
    EXPECT_FALSE(item.isEnabled());
}

TEST(LoginItem, WrittenEntryPassesTheDesktopEntryValidator) {
    const QString validator = QStandardPaths::findExecutable("desktop-file-validate");
    if (validator.isEmpty()) {
        GTEST_SKIP() << "desktop-file-validate is not installed";
    }
    TempHome home;
    LoginItem item(xdg::autostartDir(), "/home/a b/bin/tar\"vik$");
    item.setEnabled(true);
    QProcess p;
    p.start(validator, {item.entryPath()});
    ASSERT_TRUE(p.waitForFinished(10000));
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardOutput().toStdString()
                               << p.readAllStandardError().toStdString();
    // Quoting keeps the whole path one argument, with the reserved characters escaped.
    EXPECT_TRUE(
        readAll(item.entryPath()).contains(R"(Exec="/home/a b/bin/tar\\"vik\\$" --login-item)"))
        << readAll(item.entryPath()).toStdString();
}

TEST(LoginItem, OnlyTheLoginFlagMarksALoginLaunch) {
    EXPECT_TRUE(LoginItem::currentLaunchIsLogin({"tarvik", "--login-item"}));
    EXPECT_TRUE(LoginItem::currentLaunchIsLogin({"tarvik", "-platform", "xcb", "--login-item"}));
    EXPECT_FALSE(LoginItem::currentLaunchIsLogin({"tarvik"}));
    EXPECT_FALSE(LoginItem::currentLaunchIsLogin({"tarvik", "--login-items"}));
    EXPECT_FALSE(LoginItem::currentLaunchIsLogin({"tarvik", "gui"}));
}
