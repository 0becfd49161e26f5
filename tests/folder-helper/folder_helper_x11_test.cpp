// The real tarvik-folder program on a private X server: a click on an app's tile starts the
// app, Escape closes the popup, and a resident helper shows the popup for the next launch.
#include "core/sys/single_instance.h"
#include "folder-helper/folder_popup.h"
#include "folder-helper/resident_channel.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"
#include "tests/support/x_display.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <gtest/gtest.h>
#include <memory>

using tarvik::AppFolder;
using tarvik::FolderPopup;
using tarvik::SingleInstance;
using tarvik::test::TempHome;
using tarvik::test::waitUntil;
using tarvik::test::writeFile;
using tarvik::test::XDisplay;
namespace ResidentChannel = tarvik::ResidentChannel;

namespace {

// A home with one app, whose program leaves a marker file, and a folder of it.
struct FolderHome {
    TempHome home;
    AppFolder folder;
    QString file = home.path() + "/Folders/Marker tools.json";
    QString marker = home.path() + "/launched";

    FolderHome() {
        const QString script = home.path() + "/bin/mark";
        writeFile(script, QStringLiteral("#!/bin/sh\ntouch '%1'\n").arg(marker).toUtf8());
        QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QString entry = home.data() + "/applications/tarvik-test-marker.desktop";
        writeFile(entry, QStringLiteral("[Desktop Entry]\nType=Application\nName=Marker\n"
                                        "Exec=%1\n")
                             .arg(script)
                             .toUtf8());
        folder.id = QUuid::createUuid();
        folder.name = "Marker tools";
        folder.apps = {{"Marker", entry, QStringLiteral("tarvik-test-marker.desktop")}};
        writeFile(file, tarvik::encodeFolder(folder));
        QDir().mkpath(home.path() + "/run");
        QFile::setPermissions(home.path() + "/run",
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
};

std::unique_ptr<QProcess> startHelper(const FolderHome& f, const XDisplay& x,
                                      const QStringList& args) {
    auto p = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("DISPLAY", x.name());
    env.insert("QT_QPA_PLATFORM", "xcb");
    env.insert("HOME", f.home.path());
    env.insert("XDG_CONFIG_HOME", f.home.config());
    env.insert("XDG_DATA_HOME", f.home.data());
    env.insert("XDG_RUNTIME_DIR", f.home.path() + "/run");
    env.remove("WAYLAND_DISPLAY");
    p->setProcessEnvironment(env);
    p->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    p->start(TARVIK_FOLDER_HELPER, args);
    p->waitForStarted(10000);
    return p;
}

// The visible window of the process, waiting for it to appear; empty when none does.
QString windowOf(const XDisplay& x, const QProcess& p) {
    return x.xdotool({"search", "--sync", "--onlyvisible", "--pid", QString::number(p.processId())})
        .out.section('\n', 0, 0);
}

bool hasVisibleWindow(const XDisplay& x, const QProcess& p) {
    return x.xdotool({"search", "--onlyvisible", "--pid", QString::number(p.processId())})
               .exitCode == 0;
}

bool exits(QProcess& p) {
    return waitUntil([&] { return p.state() == QProcess::NotRunning; });
}

} // namespace

TEST(FolderHelperOnX, ClickingAnAppStartsItAndEscapeClosesThePopup) {
    if (const QString missing = XDisplay::missingTools(); !missing.isEmpty()) {
        GTEST_SKIP() << missing.toStdString();
    }
    XDisplay x;
    ASSERT_FALSE(x.name().isEmpty()) << "Xvfb did not start";
    FolderHome f;

    auto helper = startHelper(f, x, {f.file});
    const QString window = windowOf(x, *helper);
    ASSERT_FALSE(window.isEmpty());
    QMap<QString, int> geometry;
    for (const QString& line :
         x.xdotool({"getwindowgeometry", "--shell", window}).out.split('\n', Qt::SkipEmptyParts)) {
        geometry[line.section('=', 0, 0)] = line.section('=', 1).toInt();
    }
    const QPoint tile =
        QPoint(geometry["X"], geometry["Y"]) + FolderPopup::tileCentre(0, 1, geometry["WIDTH"]);
    EXPECT_EQ(x.xdotool({"mousemove", "--sync", QString::number(tile.x()),
                         QString::number(tile.y()), "click", "1"})
                  .exitCode,
              0);
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(f.marker); })) << "the app did not start";
    ASSERT_TRUE(exits(*helper));
    EXPECT_EQ(helper->exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(helper->exitCode(), 0);

    helper = startHelper(f, x, {f.file});
    const QString again = windowOf(x, *helper);
    ASSERT_FALSE(again.isEmpty());
    x.xdotool({"windowfocus", "--sync", again, "key", "Escape"});
    ASSERT_TRUE(exits(*helper)) << "Escape left the popup open";
    EXPECT_EQ(helper->exitCode(), 0);
}

TEST(FolderHelperOnX, AResidentHelperShowsThePopupForTheNextLaunch) {
    if (const QString missing = XDisplay::missingTools(); !missing.isEmpty()) {
        GTEST_SKIP() << missing.toStdString();
    }
    XDisplay x;
    ASSERT_FALSE(x.name().isEmpty()) << "Xvfb did not start";
    FolderHome f;

    auto resident = startHelper(f, x, {"--background", f.file});
    const SingleInstance channel(ResidentChannel::name(f.folder.id));
    ASSERT_TRUE(waitUntil([&] { return channel.notifyRunning(ResidentChannel::kPing); }));
    EXPECT_FALSE(hasVisibleWindow(x, *resident));

    // A second resident one steps back.
    auto twin = startHelper(f, x, {"--background", f.file});
    ASSERT_TRUE(exits(*twin));
    EXPECT_EQ(twin->exitCode(), 0);

    auto launch = startHelper(f, x, {f.file});
    ASSERT_TRUE(exits(*launch)) << "the launch did not hand over to the resident helper";
    EXPECT_EQ(launch->exitCode(), 0);
    const QString window = windowOf(x, *resident);
    ASSERT_FALSE(window.isEmpty());

    // Closing hides the popup; the helper stays for the next launch.
    x.xdotool({"windowfocus", "--sync", window, "key", "Escape"});
    EXPECT_TRUE(waitUntil([&] { return !hasVisibleWindow(x, *resident); }));
    EXPECT_EQ(resident->state(), QProcess::Running);

    resident->terminate();
    ASSERT_TRUE(exits(*resident));
    EXPECT_EQ(resident->exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(resident->exitCode(), 0);
    EXPECT_FALSE(channel.notifyRunning(ResidentChannel::kPing));
}

TEST(FolderHelperProgram, PrintsUsageWithoutAFileAndStaysOutOfTheBackgroundWithADamagedOne) {
    TempHome home;
    QProcess p;
    p.start(TARVIK_FOLDER_HELPER, {});
    ASSERT_TRUE(p.waitForFinished(30000));
    EXPECT_EQ(p.exitCode(), 2);
    EXPECT_TRUE(
        p.readAllStandardError().startsWith("Usage: tarvik-folder [--background] FOLDER_FILE"));

    const QString damaged = home.path() + "/Folder.json";
    writeFile(damaged, "{not json");
    p.start(TARVIK_FOLDER_HELPER, {"--background", damaged});
    ASSERT_TRUE(p.waitForFinished(30000));
    EXPECT_EQ(p.exitCode(), 1);
    EXPECT_TRUE(QString::fromUtf8(p.readAllStandardError())
                    .contains("This folder's file is damaged: " + damaged + "."));
}
