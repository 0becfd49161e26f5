// What the program does before any command: no display, unknown words, the folder helper.
#include "tests/support/tarvik_command.h"
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using tarvik::test::writeFile;

using tarvik::test::Outcome;
using tarvik::test::TarvikCommand;

TEST_F(TarvikCommand, WithoutADisplayTheProgramPrintsTheMachineSummary) {
    const Outcome bare = tarvik({});
    EXPECT_EQ(bare.exitCode, 0);
    EXPECT_TRUE(bare.out.contains("Memory")) << bare.out.toStdString();
    EXPECT_TRUE(bare.out.contains("Home disk"));
    EXPECT_TRUE(bare.err.contains("No display"));

    const Outcome json = tarvik({"status", "--json"});
    ASSERT_EQ(json.exitCode, 0);
    const QJsonObject o = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(o["home"].toString(), home_.path());
    EXPECT_GT(o["memoryTotal"].toDouble(), 0);
    EXPECT_GT(o["homeDiskTotal"].toDouble(), 0);

    EXPECT_EQ(tarvik({"gui"}).exitCode, 1); // asked for the window where none can open
}

TEST_F(TarvikCommand, CommandsNeverLoadTheWindowAndAMissingWindowIsExplained) {
    env_["LD_DEBUG"] = "files"; // the dynamic loader names every library it opens
    const Outcome settings = tarvik({"settings", "list"});
    ASSERT_EQ(settings.exitCode, 0);
    ASSERT_TRUE(settings.err.contains("libQt6Core")) << "the loader said nothing";
    for (const char* window : {"libQt6Widgets", "libQt6Gui", "libQt6Charts", "tarvik-window"}) {
        EXPECT_FALSE(settings.err.contains(window)) << window;
    }
    env_.erase("LD_DEBUG");

    // A tarvik without its window beside it or in its library folder.
    QTemporaryDir alone;
    program_ = alone.filePath("tarvik");
    ASSERT_TRUE(QFile::copy(TARVIK_BINARY, program_));
    QFile::setPermissions(program_, QFile::permissions(TARVIK_BINARY));
    env_["DISPLAY"] = ":97";
    const Outcome gui = tarvik({"gui"});
    EXPECT_EQ(gui.exitCode, 1);
    EXPECT_TRUE(gui.err.contains("Couldn't open the window")) << gui.err.toStdString();
    EXPECT_TRUE(gui.err.contains("tarvik-window.so")) << gui.err.toStdString();
    EXPECT_EQ(tarvik({"--version"}).exitCode, 0); // the commands still work
}

TEST_F(TarvikCommand, UnknownCommandsAndOptionsAreUsageErrors) {
    for (const QStringList& args : QList<QStringList>{
             {"stauts"}, {"status", "--jsn"}, {"--frobnicate"}, {"status", "extra"}}) {
        const Outcome r = tarvik(args);
        EXPECT_EQ(r.exitCode, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(r.out.isEmpty()) << args.join(' ').toStdString();
    }
    const Outcome version = tarvik({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.out.startsWith("tarvik ")) << version.out.toStdString();
    const Outcome help = tarvik({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* command : {"status", "settings", "gui"}) {
        EXPECT_TRUE(help.out.contains(command)) << command;
    }
}

TEST_F(TarvikCommand, LaunchFoldersExitsZeroWhateverTheFolderListHolds) {
    ASSERT_EQ(tarvik({"settings", "set", "dockFoldersShowIndicators", "true"}).exitCode, 0);
    const QList<std::optional<QByteArray>> files{
        std::nullopt,
        QByteArray(""),
        QByteArray("[]"),
        QByteArray("{not json"),
        QByteArray("\xff\xfe\x00garbage", 10),
        QByteArray(R"([{"id":"0F4B6F62-2B44-4C3B-9A8E-3C0F5E1B7A11","name":"Work","apps":[]}])")};
    for (const auto& contents : files) {
        QFile::remove(folders());
        if (contents) {
            writeFile(folders(), *contents);
        }
        const Outcome r = tarvik({"--launch-folders"});
        EXPECT_EQ(r.exitCode, 0) << (contents ? contents->toStdString() : "missing");
        EXPECT_TRUE(r.out.isEmpty()); // no window, no summary: it only launches
    }
    // Also among other arguments, and with the preference off.
    EXPECT_EQ(tarvik({"--login-item", "--launch-folders"}).exitCode, 0);
    ASSERT_EQ(tarvik({"settings", "set", "dockFoldersShowIndicators", "false"}).exitCode, 0);
    EXPECT_EQ(tarvik({"--launch-folders"}).exitCode, 0);
}

TEST_F(TarvikCommand, FolderLinksWithoutAWindowRemoveTheAppOrSaySoAndAnythingElseIsRefused) {
    const QString id = "6F1C2B1E-4C1B-4C59-9A55-0D6B1B2C3D4E";
    writeFile(folders(), QStringLiteral(R"([{"id": "%1", "name": "Music", "showInDock": true,
        "apps": [
          {"name": "Rock", "path": "/nowhere/a.desktop", "bundleIdentifier": "org.example.Rock.desktop"},
          {"name": "Rock and Roll", "path": "/nowhere/b.desktop",
           "bundleIdentifier": "org.example.Rock&Roll+Pop.desktop"}]}])")
                             .arg(id)
                             .toUtf8());
    const Outcome removed =
        tarvik({"tarvik://folder/" + id + "/remove?app=org.example.Rock%26Roll%2BPop.desktop"});
    EXPECT_EQ(removed.exitCode, 0) << removed.err.toStdString();
    EXPECT_EQ(removed.out, "Removed org.example.Rock&Roll+Pop.desktop from “Music”.\n");
    const QByteArray saved = tarvik::test::readAll(folders());
    EXPECT_FALSE(saved.contains("Rock&Roll")) << saved.toStdString();
    EXPECT_TRUE(saved.contains("org.example.Rock.desktop"));
    const Outcome again =
        tarvik({"tarvik://folder/" + id + "/remove?app=org.example.Rock%26Roll%2BPop.desktop"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_TRUE(again.err.contains("has no app org.example.Rock&Roll+Pop.desktop"))
        << again.err.toStdString();

    const Outcome open = tarvik({"tarvik://folder/" + id});
    EXPECT_EQ(open.exitCode, 1);
    EXPECT_TRUE(open.err.contains("window isn't available")) << open.err.toStdString();

    for (const char* bad : {"tarvik://folder/not-an-id", "tarvik://folder/" /* no id */,
                            "TARVIK://elsewhere", "tarvik:folder"}) {
        const Outcome refused = tarvik({bad});
        EXPECT_EQ(refused.exitCode, 2) << bad;
        EXPECT_TRUE(refused.err.contains("is not a Tarvik link")) << refused.err.toStdString();
    }
}
