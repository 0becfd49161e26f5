// Runs the real tarvik executable as a child process in a temporary home.
#include "tests/support/private_bus.h"
#include "tests/support/scripted_server.h"
#include "tests/support/speed_server.h"
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

using tarvik::test::readAll;
using tarvik::test::writeFile;

namespace {

using tarvik::test::Outcome;

class TarvikCommand : public ::testing::Test {
protected:
    Outcome tarvik(const QStringList& args, const QString& pathPrefix = {}, int waitMs = 30000) {
        tarvik::test::TarvikRun run = run_;
        if (!pathPrefix.isEmpty() && run.env.count("PATH") == 0) {
            run.env["PATH"] = pathPrefix + ":/usr/bin:/bin";
        }
        return run(args, home_.path(), waitMs);
    }
    // Points the child's system and session buses at `bus`, with logind's stand-in on it; false
    // when the machine lacks dbus-daemon or python3-dbusmock.
    bool withMockLogind(tarvik::test::PrivateBus& bus) {
        if (!bus.isRunning() || !tarvik::test::PrivateBus::hasDbusMock()) {
            return false;
        }
        EXPECT_TRUE(bus.startMock("org.freedesktop.login1", {"--template", "logind"}));
        env_["DBUS_SYSTEM_BUS_ADDRESS"] = bus.address();
        env_["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        return true;
    }
    QString conf() const { return home_.path() + "/.config/Tarvik/Tarvik.conf"; }
    QString folders() const {
        return home_.path() + "/.local/share/Tarvik/DockFolders/folders.json";
    }
    QTemporaryDir home_;
    tarvik::test::TarvikRun run_;
    QString& program_ = run_.program;
    std::map<QString, QString>& env_ = run_.env;
    QByteArray& input_ = run_.input;
};

} // namespace

TEST_F(TarvikCommand, SettingsRejectBadInputWithExitTwoAndWriteNothing) {
    ASSERT_EQ(tarvik({"settings", "set", "monitorInterval", "5"}).exitCode, 0);
    const QByteArray before = readAll(conf());
    ASSERT_FALSE(before.isEmpty());

    const QList<QStringList> bad{
        {"settings", "set", "monitorInterval", "0"},
        {"settings", "set", "monitorInterval", "11"},
        {"settings", "set", "monitorInterval", "soon"},
        {"settings", "set", "showMenuBarExtra", "maybe"},
        {"settings", "set", "menuBarStats", "cpu,volume"},
        {"settings", "set", "speedTestBaseURL", "speed test please"},
        {"settings", "set", "speedTestBaseURL", "ftp://mirror.example/"},
        {"settings", "set", "speedTestBaseURL", "http://"},
        {"settings", "set", "agentUsage.enabled", "claude,gemini"},
        {"settings", "set", "agentUsage.order", "codex;claude"},
        {"settings", "set", "keepAwakeSchedules", "every day"},
        {"settings", "set", "keepAwakeSchedules", "{\"a\": 1}"},
        {"settings", "set", "keepAwakeSchedules",
         R"([{"id":"{6f1d3c1e-0000-4000-8000-000000000001}","weekdays":[2],)"
         R"("startMinutes":99999,"endMinutes":60}])"},
        {"settings", "set", "noSuchKey", "1"},
        {"settings", "get", "noSuchKey"},
        {"settings", "reset", "noSuchKey"},
        {"settings", "set", "monitorInterval"},
        {"settings", "frobnicate"},
        {"settings"},
    };
    for (const auto& args : bad) {
        const Outcome r = tarvik(args);
        EXPECT_EQ(r.exitCode, 2) << args.join(' ').toStdString();
        EXPECT_FALSE(r.err.isEmpty()) << args.join(' ').toStdString();
        EXPECT_EQ(readAll(conf()), before) << args.join(' ').toStdString();
    }
    EXPECT_TRUE(tarvik({"settings", "set", "noSuchKey", "1"}).err.contains("noSuchKey"));
    EXPECT_TRUE(tarvik({"settings", "set", "monitorInterval", "11"})
                    .err.contains("monitorInterval must be between 1 and 10."));
    EXPECT_TRUE(tarvik({"settings", "set", "agentUsage.enabled", "claude,gemini"})
                    .err.contains("\"gemini\" is not an agent; choose from claude, codex, copilot, "
                                  "openRouter."));

    // Good values are kept in one spelling.
    ASSERT_EQ(tarvik({"settings", "set", "speedTestBaseURL", "http://127.0.0.1:8080"}).exitCode, 0);
    EXPECT_EQ(tarvik({"settings", "get", "speedTestBaseURL"}).out, "http://127.0.0.1:8080/\n");
    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.enabled", " codex ,claude,codex"}).exitCode,
              0);
    EXPECT_EQ(tarvik({"settings", "get", "agentUsage.enabled"}).out, "codex,claude\n");
    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.enabled", ""}).exitCode, 0); // none
    ASSERT_EQ(tarvik({"settings", "set", "keepAwakeSchedules",
                      R"([{"id":"{6f1d3c1e-0000-4000-8000-000000000001}","weekdays":[2,3],)"
                      R"("startMinutes":540,"endMinutes":1020}])"})
                  .exitCode,
              0);
}

TEST_F(TarvikCommand, SettingsSetGetResetAndListShareOneStore) {
    EXPECT_EQ(tarvik({"settings", "get", "monitorInterval"}).out, "2\n");
    EXPECT_EQ(tarvik({"settings", "set", "menuBarStats", "battery,cpu"}).exitCode, 0);
    EXPECT_EQ(tarvik({"settings", "get", "menuBarStats"}).out, "cpu,battery\n");
    EXPECT_EQ(tarvik({"settings", "set", "hideDockIcon", "on"}).exitCode, 0);
    EXPECT_EQ(tarvik({"settings", "get", "hideDockIcon"}).out, "true\n");
    EXPECT_TRUE(readAll(conf()).contains("hideDockIcon=true"));

    const Outcome list = tarvik({"settings", "list", "--json"});
    ASSERT_EQ(list.exitCode, 0);
    const QJsonArray keys = QJsonDocument::fromJson(list.out.toUtf8()).array();
    EXPECT_EQ(keys.size(), 18);
    bool sawInterval = false;
    for (const auto& v : keys) {
        const QJsonObject o = v.toObject();
        if (o["key"] == "hideDockIcon") {
            EXPECT_EQ(o["value"], true);
            EXPECT_EQ(o["default"], false);
            EXPECT_EQ(o["isDefault"], false);
        }
        if (o["key"] == "monitorInterval") {
            sawInterval = true;
            EXPECT_EQ(o["value"].toDouble(), 2.0);
            EXPECT_EQ(o["isDefault"], true);
        }
    }
    EXPECT_TRUE(sawInterval);

    EXPECT_EQ(tarvik({"settings", "reset", "hideDockIcon"}).exitCode, 0);
    EXPECT_EQ(tarvik({"settings", "get", "hideDockIcon"}).out, "false\n");
    EXPECT_FALSE(readAll(conf()).contains("hideDockIcon"));
    EXPECT_TRUE(tarvik({"settings", "list"}).out.contains("menuBarStats"));
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

TEST_F(TarvikCommand, MonitorGivesOneReadingAsJsonOrSeveralAsText) {
    const Outcome once = tarvik({"monitor", "--once", "--json", "--interval", "0.3"});
    ASSERT_EQ(once.exitCode, 0) << once.err.toStdString();
    const QJsonObject r = QJsonDocument::fromJson(once.out.toUtf8()).object();
    ASSERT_FALSE(r.isEmpty()) << once.out.toStdString();
    // Two samples an interval apart: CPU figures are there and plausible.
    ASSERT_TRUE(r["cpu"].isObject());
    const double total = r["cpu"]["total"].toDouble(-1);
    EXPECT_GE(total, 0.0);
    EXPECT_LE(total, 1.0);
    EXPECT_EQ(r["cpu"]["cores"].toArray().size(), r["topology"]["logicalCores"].toInt());
    EXPECT_GT(r["memory"]["total"].toDouble(), r["memory"]["used"].toDouble());
    EXPECT_GE(r["network"]["receivedPerSecond"].toDouble(-1), 0.0);
    EXPECT_GT(r["uptimeSeconds"].toDouble(), 0.0);

    const Outcome text = tarvik({"monitor", "--count", "2", "--interval", "0.2"});
    ASSERT_EQ(text.exitCode, 0);
    EXPECT_EQ(text.out.count("\nMemory "), 2) << text.out.toStdString(); // not a terminal: appended
    EXPECT_FALSE(text.out.contains("\x1b[")); // no screen control codes into a pipe

    EXPECT_EQ(tarvik({"monitor", "--interval", "0"}).exitCode, 2);
    EXPECT_EQ(tarvik({"monitor", "--count", "-1"}).exitCode, 2);
}

TEST_F(TarvikCommand, CleanIsASafeRmThatRefusesWithTheGuardsWordsAndAsksFirst) {
    const QString home = QDir(home_.path()).canonicalPath();
    writeFile(home + "/scratch/a.tmp", QByteArray(5000, 'a'));
    writeFile(home + "/Documents/thesis.tex", "important");

    // No terminal and no --yes: nothing is removed.
    const Outcome refused = tarvik({"clean", home + "/scratch/a.tmp"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_TRUE(refused.err.contains("Run this in a terminal to be asked, or pass --yes."));
    EXPECT_TRUE(QFile::exists(home + "/scratch/a.tmp"));

    const Outcome mixed = tarvik({"clean", "--yes", "--mode", "deletePermanently",
                                  home + "/scratch/a.tmp", home + "/Documents", "/etc/hostname"});
    EXPECT_EQ(mixed.exitCode, 1); // something was refused
    EXPECT_FALSE(QFile::exists(home + "/scratch/a.tmp"));
    EXPECT_TRUE(QFile::exists(home + "/Documents/thesis.tex"));
    EXPECT_TRUE(mixed.out.contains(home + "/Documents is a protected location and was skipped."))
        << mixed.out.toStdString();
    EXPECT_TRUE(
        mixed.out.contains("/etc/hostname is outside the locations Tarvik is allowed to clean."));
    EXPECT_TRUE(mixed.out.startsWith("Removed 1 item, "));

    writeFile(home + "/scratch/b.tmp", "b");
    const Outcome trashed = tarvik({"clean", "--yes", "--json", home + "/scratch/b.tmp"});
    EXPECT_EQ(trashed.exitCode, 0);
    EXPECT_TRUE(QFile::exists(home + "/.local/share/Trash/files/b.tmp")); // fileRemovalMode default
    EXPECT_EQ(QJsonDocument::fromJson(trashed.out.toUtf8()).object()["removed"].toArray().size(),
              1);
    EXPECT_EQ(tarvik({"clean", "--yes", "--mode", "shred", home + "/scratch"}).exitCode, 2);
}

TEST_F(TarvikCommand, JunkSizeAndExclusionsWorkFromTheCommandLine) {
    const QString home = QDir(home_.path()).canonicalPath();
    writeFile(home + "/.cache/app/blob", QByteArray(20000, 'j'));
    writeFile(home + "/.cache/keep/blob", QByteArray(20000, 'k'));
    ASSERT_EQ(tarvik({"exclusions", "add", "~/.cache/keep"}).exitCode, 0);
    EXPECT_EQ(tarvik({"exclusions", "list"}).out, home + "/.cache/keep\n");

    const Outcome junk = tarvik({"junk", "--json"});
    ASSERT_EQ(junk.exitCode, 0);
    const QJsonArray categories = QJsonDocument::fromJson(junk.out.toUtf8()).array();
    ASSERT_EQ(categories.size(), 11);
    const QJsonObject caches = categories.at(0).toObject();
    EXPECT_EQ(caches["id"].toString(), "userCaches");
    const QJsonArray items = caches["items"].toArray();
    ASSERT_EQ(items.size(), 1); // the excluded folder is not offered
    EXPECT_EQ(items.at(0).toObject()["path"].toString(), home + "/.cache/app");

    EXPECT_EQ(tarvik({"junk", "clean"}).exitCode, 2); // no terminal, no --yes
    EXPECT_EQ(tarvik({"junk", "clean", "--category", "nonsense", "--yes"}).exitCode, 2);
    const Outcome cleaned = tarvik({"junk", "clean", "--category", "userCaches", "--yes"});
    EXPECT_EQ(cleaned.exitCode, 0) << cleaned.out.toStdString() << cleaned.err.toStdString();
    EXPECT_FALSE(QFile::exists(home + "/.cache/app"));
    EXPECT_TRUE(QFile::exists(home + "/.cache/keep/blob"));

    const Outcome size = tarvik({"size", "--json", home + "/.cache"});
    ASSERT_EQ(size.exitCode, 0);
    EXPECT_GE(QJsonDocument::fromJson(size.out.toUtf8())
                  .array()
                  .at(0)
                  .toObject()["allocatedBytes"]
                  .toDouble(),
              20000.0);
    EXPECT_EQ(tarvik({"size", home + "/missing"}).exitCode, 1);

    ASSERT_EQ(tarvik({"exclusions", "remove", home + "/.cache/keep"}).exitCode, 0);
    EXPECT_EQ(tarvik({"exclusions", "list"}).out, "No exclusions yet\n");
    EXPECT_EQ(tarvik({"exclusions", "remove", "/nowhere"}).exitCode, 2);
    EXPECT_TRUE(tarvik({"status"}).out.contains("Junk "));
}

TEST_F(TarvikCommand, BrewCommandsWorkAgainstAStandInBrew) {
    for (const char* real :
         {"/opt/homebrew/bin/brew", "/usr/local/bin/brew", "/home/linuxbrew/.linuxbrew/bin/brew"}) {
        if (QFile::exists(real)) {
            GTEST_SKIP() << "a real Homebrew is installed here; the stand-in would not be used";
        }
    }
    const QString bin = home_.path() + "/brewprefix/bin";
    const QString fixtures = TARVIK_FIXTURES "/homebrew";
    writeFile(
        bin + "/brew",
        QByteArray("#!/bin/bash\n") + "echo \"$*\" >> '" + home_.path().toUtf8() +
            "/brew-calls'\n"
            "case \"$1\" in\n"
            "  --version) echo 'Homebrew 4.4.1-3-gdeadbee' ;;\n"
            "  info) cat '" +
            fixtures.toUtf8() +
            "/assembled/info_v2_installed_assembled.json' ;;\n"
            "  outdated) [ -n \"$BREW_FAIL\" ] && { echo 'Error: boom'; exit 1; }; cat '" +
            fixtures.toUtf8() +
            "/brew_dart/outdated_v2.json' ;;\n"
            "  services) cat '" +
            fixtures.toUtf8() +
            "/phpmon/brew-services-normal.json' ;;\n"
            "  upgrade) printf '\\033[34m==>\\033[0m \\033[1mUpgrading aom\\033[0m\\n"
            "==> Fetching aom\\n##### 45.5%%\\r######## 100.0%%\\n"
            "==> Pouring aom--3.13.2.bottle.tar.gz\\n\\033cbell\\007 \\033(Bhere\\n' ;;\n"
            "  install) echo 'curl: (6) Could not resolve host: ghcr.io'; echo 'Error: "
            "download failed'; exit 1 ;;\n"
            "  uninstall) echo \"askpass=$SUDO_ASKPASS\" ;;\n"
            "  search) case \"$2\" in\n"
            "    nothing) echo 'Error: No formulae or casks found for \"nothing\".'; exit 1 ;;\n"
            "    offline) echo 'Error: Failed to connect to formulae.brew.sh'; exit 1 ;;\n"
            "    *) printf '==> Formulae\\nwget\\nwget2\\n\\n==> Casks\\nwgetgui\\n' ;;\n"
            "  esac ;;\n"
            "  *) echo \"unexpected $*\"; exit 9 ;;\n"
            "esac\n");
    QFile::setPermissions(bin + "/brew", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    const Outcome status = tarvik({"brew", "status", "--json"}, bin);
    ASSERT_EQ(status.exitCode, 0) << status.err.toStdString();
    const QJsonObject s = QJsonDocument::fromJson(status.out.toUtf8()).object();
    EXPECT_EQ(s["version"].toString(), "4.4.1");
    EXPECT_EQ(s["formulae"].toInt(), 113);
    EXPECT_EQ(s["casks"].toInt(), 2);
    EXPECT_EQ(s["outdated"].toInt(), 53);

    const Outcome outdated = tarvik({"brew", "outdated", "--json"}, bin);
    ASSERT_EQ(outdated.exitCode, 0);
    EXPECT_EQ(QJsonDocument::fromJson(outdated.out.toUtf8()).array().size(), 53);
    EXPECT_TRUE(tarvik({"brew", "list"}, bin).out.contains("discord"));

    const Outcome upgrade = tarvik({"brew", "upgrade", "aom"}, bin);
    EXPECT_EQ(upgrade.exitCode, 0) << upgrade.err.toStdString();
    EXPECT_TRUE(upgrade.out.contains("==> Upgrading aom\n")); // escape codes stripped
    EXPECT_FALSE(upgrade.out.contains("\x1b"));               // not a terminal: no colours
    EXPECT_TRUE(upgrade.out.contains("45.5%\n"));             // carriage returns end lines
    // Other control sequences in brew's output never reach the terminal.
    EXPECT_TRUE(upgrade.out.contains("bell here\n")) << upgrade.out.toStdString();
    EXPECT_FALSE(upgrade.out.contains('\a'));

    const Outcome install = tarvik({"brew", "install", "wget"}, bin);
    EXPECT_EQ(install.exitCode, 1);
    EXPECT_TRUE(install.err.contains("Couldn't download wget. Check your connection."))
        << install.err.toStdString();

    // Uninstalling asks first; without a terminal it needs --yes, and brew is not run.
    const Outcome unconfirmed = tarvik({"brew", "uninstall", "--force", "jq"}, bin);
    EXPECT_EQ(unconfirmed.exitCode, 2);
    EXPECT_TRUE(unconfirmed.err.contains("Nothing was uninstalled: uninstalling needs your "
                                         "confirmation. Run this in a terminal to be asked, or "
                                         "pass --yes."))
        << unconfirmed.err.toStdString();
    EXPECT_FALSE(QString::fromUtf8(readAll(home_.path() + "/brew-calls")).contains("uninstall"));
    const Outcome uninstall = tarvik({"brew", "uninstall", "--force", "--yes", "jq"}, bin);
    EXPECT_EQ(uninstall.exitCode, 0);
    EXPECT_TRUE(uninstall.out.contains("askpass=" + home_.path() +
                                       "/.local/share/Tarvik/Homebrew/askpass.sh"));

    const QString calls = QString::fromUtf8(readAll(home_.path() + "/brew-calls"));
    EXPECT_TRUE(calls.contains("upgrade --formula aom\n")) << calls.toStdString();
    EXPECT_TRUE(calls.contains("install --formula wget\n"));
    EXPECT_TRUE(calls.contains("uninstall --formula --ignore-dependencies jq\n"));

    const Outcome search = tarvik({"brew", "search", "--json", "wget"}, bin);
    ASSERT_EQ(search.exitCode, 0);
    const QJsonObject found = QJsonDocument::fromJson(search.out.toUtf8()).object();
    EXPECT_EQ(found["formulae"].toArray().size(), 2);
    EXPECT_EQ(found["casks"].toArray().at(0).toString(), "wgetgui");
    // Nothing found is an answer; brew failing to search is not.
    const Outcome nothing = tarvik({"brew", "search", "nothing"}, bin);
    EXPECT_EQ(nothing.exitCode, 0);
    EXPECT_TRUE(nothing.out.contains("Nothing in Homebrew matches “nothing”."));
    const Outcome offline = tarvik({"brew", "search", "offline"}, bin);
    EXPECT_EQ(offline.exitCode, 1);
    EXPECT_TRUE(offline.err.contains("brew stopped with exit status 1."))
        << offline.err.toStdString();
    EXPECT_FALSE(offline.out.contains("Nothing in Homebrew matches"));

    // A package list brew could not give is said to be one.
    env_["BREW_FAIL"] = "1";
    const Outcome failing = tarvik({"brew", "outdated"}, bin);
    env_.erase("BREW_FAIL");
    EXPECT_EQ(failing.exitCode, 1);
    EXPECT_EQ(failing.err, "tarvik: Couldn't read Homebrew's package list.\n");

    // Without any brew: the application's own words.
    const Outcome none = tarvik({"brew", "status"}, home_.path() + "/nothing-here");
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_TRUE(none.err.contains("Homebrew isn't installed"));
}

TEST_F(TarvikCommand, SpeedTestRunsAgainstALocalServerAndKeepsItsHistory) {
    tarvik::test::ServerThread local;
    const QString base = QString("http://127.0.0.1:%1").arg(local.port); // no trailing slash
    const Outcome run = tarvik({"speedtest", "--base-url", base, "--duration", "1", "--json"});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject r = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_GT(r["downloadMbps"].toDouble(), 0.0);
    EXPECT_GT(r["uploadMbps"].toDouble(), 0.0);
    EXPECT_EQ(r["server"].toObject()["colo"].toString(), "FRA");
    EXPECT_FALSE(r["id"].toString().isEmpty());

    const Outcome history = tarvik({"speedtest", "history", "--json"});
    ASSERT_EQ(history.exitCode, 0);
    const QJsonArray kept = QJsonDocument::fromJson(history.out.toUtf8()).array();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept.at(0).toObject()["id"], r["id"]);
    EXPECT_TRUE(QFile::exists(home_.path() + "/.local/share/Tarvik/speedtests.json"));

    const Outcome refused =
        tarvik({"speedtest", "--base-url", "http://127.0.0.1:1/", "--duration", "1"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains("Couldn't reach the speed test server. "))
        << refused.err.toStdString();
    EXPECT_EQ(tarvik({"speedtest", "--duration", "0"}).exitCode, 2);

    // The setting is the address when none is given.
    ASSERT_EQ(tarvik({"settings", "set", "speedTestBaseURL", base}).exitCode, 0);
    const Outcome bySetting = tarvik({"speedtest", "--duration", "1", "--json"});
    ASSERT_EQ(bySetting.exitCode, 0) << bySetting.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(bySetting.out.toUtf8())
                  .object()["server"]
                  .toObject()["colo"]
                  .toString(),
              "FRA");
}

TEST_F(TarvikCommand, PsListsQuitEndsAndRefusesWithDistinctExitCodes) {
    QProcess child; // a process of this user that the command may quit
    child.start("/bin/sh", {"-c", "echo ready; exec sleep 30"});
    ASSERT_TRUE(child.waitForReadyRead(5000));
    const qint64 pid = child.processId();

    const Outcome ps = tarvik({"ps", "--sort", "memory", "--limit", "0", "--json"});
    ASSERT_EQ(ps.exitCode, 0) << ps.err.toStdString();
    const QJsonObject listing = QJsonDocument::fromJson(ps.out.toUtf8()).object();
    const QJsonArray rows = listing["processes"].toArray();
    ASSERT_EQ(rows.size(), listing["count"].toInt());
    bool found = false;
    double previous = 1e300;
    for (const auto& v : rows) {
        const QJsonObject row = v.toObject();
        EXPECT_LE(row["memory"].toDouble(), previous); // busiest first
        previous = row["memory"].toDouble();
        if (row["pid"].toInteger() == pid) {
            found = true;
            EXPECT_EQ(row["name"].toString(), "sleep");
            EXPECT_TRUE(row["canQuit"].toBool());
        }
        if (row["pid"].toInt() == 1) {
            EXPECT_FALSE(row["canQuit"].toBool());
        }
    }
    EXPECT_TRUE(found);
    const Outcome top = tarvik({"ps", "--limit", "3"});
    EXPECT_EQ(top.out.count('\n'), 5) << top.out.toStdString(); // heading, 3 rows, total
    EXPECT_EQ(tarvik({"ps", "--sort", "size"}).exitCode, 2);

    const Outcome refused = tarvik({"quit", "1"});
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_TRUE(refused.err.contains("is part of the system and can't be quit from here."))
        << refused.err.toStdString();

    const Outcome quit = tarvik({"quit", QString::number(pid)});
    EXPECT_EQ(quit.exitCode, 0) << quit.err.toStdString();
    EXPECT_EQ(quit.out.trimmed(), "sleep has quit.");
    EXPECT_TRUE(child.waitForFinished(3000));

    const Outcome gone = tarvik({"quit", QString::number(pid)});
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_EQ(gone.err.trimmed(), QString("tarvik: No process has the ID %1.").arg(pid));
}

TEST_F(TarvikCommand, HealthPrintsIssuesAsTextOrJsonAndStatusCarriesThem) {
    const Outcome json = tarvik({"health", "--seconds", "0.5", "--json"});
    ASSERT_EQ(json.exitCode, 0) << json.err.toStdString();
    const QJsonDocument doc = QJsonDocument::fromJson(json.out.toUtf8());
    ASSERT_TRUE(doc.isArray()) << json.out.toStdString();
    for (const auto& v : doc.array()) {
        const QJsonObject issue = v.toObject();
        EXPECT_FALSE(issue["title"].toString().isEmpty());
        EXPECT_TRUE(issue["severity"] == "warning" || issue["severity"] == "critical");
    }
    const Outcome text = tarvik({"health", "--seconds", "0.5"});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_FALSE(text.out.isEmpty());
    const Outcome status = tarvik({"status", "--json"});
    EXPECT_TRUE(QJsonDocument::fromJson(status.out.toUtf8()).object()["healthIssues"].isArray());
}

TEST_F(TarvikCommand, AgentsFetchEveryEnabledProviderAndSayWhatIsMissing) {
    tarvik::test::ScriptedServer server;
    writeFile(home_.path() + "/.claude/.credentials.json",
              R"({"claudeAiOauth":{"accessToken":"tok","subscriptionType":"pro"}})");
    server.answer("/api/oauth/usage",
                  {200, R"({"five_hour":{"utilization":50,"resets_at":"2099-01-01T00:00:00Z"},)"
                        R"("seven_day":{"utilization":5}})"});
    server.answer("/backend-api/wham/usage", {429, "{}", {{"Retry-After", "90"}}});
    writeFile(home_.path() + "/.codex/auth.json", R"({"tokens":{"access_token":"t"}})");
    for (const char* name :
         {"TARVIK_CLAUDE_API", "TARVIK_CODEX_API", "TARVIK_COPILOT_API", "TARVIK_OPENROUTER_API"}) {
        env_[name] = server.url().toString();
    }
    env_["PATH"] = "/nonexistent";                               // no gh to ask
    env_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"; // no keyring either
    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.order", "codex,claude"}).exitCode, 0);

    const Outcome json = tarvik({"agents", "--json"});
    ASSERT_EQ(json.exitCode, 0) << json.err.toStdString();
    const QJsonArray cards = QJsonDocument::fromJson(json.out.toUtf8()).array();
    ASSERT_EQ(cards.size(), 4);
    EXPECT_EQ(cards[0].toObject()["provider"], "codex"); // the stored order, then the rest
    EXPECT_EQ(cards[0].toObject()["error"].toObject()["kind"], "rateLimited");
    EXPECT_EQ(cards[0].toObject()["error"].toObject()["retryAfter"], 90);
    const QJsonObject claude = cards[1].toObject();
    EXPECT_EQ(claude["plan"], "Pro");
    EXPECT_EQ(claude["limits"].toArray()[0].toObject()["used"], 0.5);
    EXPECT_EQ(cards[2].toObject()["error"].toObject()["kind"], "notSignedIn");
    EXPECT_EQ(cards[3].toObject()["provider"], "openRouter");

    const Outcome text = tarvik({"agents"});
    EXPECT_TRUE(text.out.contains("Claude — Pro")) << text.out.toStdString();
    EXPECT_TRUE(text.out.contains("50% used"));
    EXPECT_TRUE(text.out.contains("The service is asking Tarvik to slow down."));

    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.enabled", "copilot"}).exitCode, 0);
    EXPECT_EQ(tarvik({"agents"}).exitCode, 1); // the only enabled agent failed
    EXPECT_EQ(tarvik({"agents", "key", "set", "anthropic"}).exitCode, 2);
    EXPECT_EQ(tarvik({"agents", "key", "set", "openrouter"}).exitCode, 2); // nothing on stdin
}

TEST_F(TarvikCommand, PastedKeysLiveInTheKeyringAndReachOnlyTheirService) {
    const QString dbus = QStandardPaths::findExecutable("dbus-daemon");
    const QString keyring = QStandardPaths::findExecutable("gnome-keyring-daemon");
    if (dbus.isEmpty() || keyring.isEmpty()) {
        GTEST_SKIP() << "needs dbus-daemon and gnome-keyring-daemon for a private Secret Service";
    }
    // A private session bus with an unlocked keyring of its own.
    QProcess bus;
    bus.start(dbus, {"--session", "--nofork", "--print-address=1"});
    ASSERT_TRUE(bus.waitForReadyRead(5000));
    const QString address = QString::fromUtf8(bus.readLine()).trimmed();
    QTemporaryDir runtime;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("DBUS_SESSION_BUS_ADDRESS", address);
    env.insert("XDG_RUNTIME_DIR", runtime.path());
    env.insert("HOME", home_.path());
    env.insert("XDG_DATA_HOME", home_.path() + "/.local/share");
    QProcess daemon;
    daemon.setProcessChannelMode(QProcess::MergedChannels);
    daemon.setProcessEnvironment(env);
    daemon.start(keyring, {"--foreground", "--unlock", "--components=secrets"});
    ASSERT_TRUE(daemon.waitForStarted(5000));
    daemon.write("test-password\n");
    daemon.waitForBytesWritten(5000);
    daemon.closeWriteChannel();
    // The keyring is ready once its login collection is on disk.
    const QString login = home_.path() + "/.local/share/keyrings/login.keyring";
    for (int i = 0; i < 100 && !QFile::exists(login); ++i) {
        QThread::msleep(50);
    }
    ASSERT_TRUE(QFile::exists(login))
        << "the private keyring did not start: " << daemon.readAll().toStdString();
    env_["DBUS_SESSION_BUS_ADDRESS"] = address;
    env_["XDG_RUNTIME_DIR"] = runtime.path();

    tarvik::test::ScriptedServer server;
    server.answer("/api/v1/key", {200, R"({"data":{"label":"mine","usage":2,"limit":10}})"});
    server.answer("/api/v1/credits", {200, R"({"data":{"total_credits":20,"total_usage":2}})"});
    env_["TARVIK_OPENROUTER_API"] = server.url().toString();
    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.enabled", "openRouter"}).exitCode, 0);

    input_ = "sk-or-v1-secret\n";
    const Outcome saved = tarvik({"agents", "key", "set", "openrouter"});
    input_.clear();
    ASSERT_EQ(saved.exitCode, 0) << saved.err.toStdString();
    const Outcome fetched = tarvik({"agents", "--json"});
    ASSERT_EQ(fetched.exitCode, 0) << fetched.out.toStdString() << fetched.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(fetched.out.toUtf8()).array()[0].toObject()["account"],
              "mine");
    ASSERT_FALSE(server.requests().empty());
    EXPECT_EQ(server.requests().back().headers.at("authorization"), "Bearer sk-or-v1-secret");
    // The key is in the keyring, not in Tarvik's own files.
    EXPECT_FALSE(readAll(conf()).contains("sk-or-v1"));

    ASSERT_EQ(tarvik({"agents", "key", "clear", "openrouter"}).exitCode, 0);
    const Outcome cleared = tarvik({"agents", "--json"});
    EXPECT_EQ(QJsonDocument::fromJson(cleared.out.toUtf8())
                  .array()[0]
                  .toObject()["error"]
                  .toObject()["kind"],
              "notSignedIn");
    daemon.kill();
    daemon.waitForFinished();
    bus.kill();
    bus.waitForFinished();
}

TEST_F(TarvikCommand, AgentsCostAddsUpTodaysLocalLogsAtApiPrices) {
    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    const QString line =
        QString(R"({"timestamp":"%1","requestId":"req_1","message":{"id":"msg_1",)"
                R"("model":"claude-sonnet-4-5-20250929","usage":{"input_tokens":1000000,)"
                R"("output_tokens":0}}})")
            .arg(now);
    // Claude Code writes an answer more than once; it counts once.
    writeFile(home_.path() + "/.claude/projects/-home-me-app/session.jsonl",
              (line + "\n" + line + "\nnot json\n").toUtf8());
    writeFile(
        home_.path() + "/.codex/sessions/2026/11/22/rollout.jsonl",
        QString(R"({"timestamp":"%1","type":"turn_context","payload":{"model":"gpt-5-codex"}})"
                "\n"
                R"({"timestamp":"%1","type":"event_msg","payload":{"type":"token_count",)"
                R"("info":{"total_token_usage":{"input_tokens":1000000,)"
                R"("cached_input_tokens":0,"output_tokens":100000}}}})"
                "\n")
            .arg(now)
            .toUtf8());
    const Outcome json = tarvik({"agents", "cost", "--json"});
    ASSERT_EQ(json.exitCode, 0) << json.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_NEAR(o["totalCost"].toDouble(), 3.00 + 1.25 + 1.00, 1e-9);
    EXPECT_EQ(o["totalTokens"].toDouble(), 2'100'000);
    ASSERT_EQ(o["models"].toArray().size(), 2);
    EXPECT_EQ(o["models"].toArray()[0].toObject()["model"], "claude-sonnet-4-5-20250929");

    const Outcome text = tarvik({"agents", "cost", "--period", "yesterday"});
    EXPECT_TRUE(text.out.contains("No usage recorded for this period")) << text.out.toStdString();
    EXPECT_EQ(tarvik({"agents", "cost", "--period", "week"}).exitCode, 2);
}

TEST_F(TarvikCommand, LargeAndDupesFindAndDupesDeleteKeepsTheOriginal) {
    const QByteArray data(1'500'000, 'd');
    writeFile(home_.path() + "/Downloads/first.iso", data);
    writeFile(home_.path() + "/Documents/second.iso", data);
    {
        QFile older(home_.path() + "/Downloads/first.iso");
        ASSERT_TRUE(older.open(QIODevice::ReadWrite));
        older.setFileTime(QDateTime::currentDateTime().addDays(-10),
                          QFileDevice::FileModificationTime);
    }

    const Outcome large = tarvik({"large", "--min", "1MB", "--json"});
    ASSERT_EQ(large.exitCode, 0) << large.err.toStdString();
    const QJsonArray files = QJsonDocument::fromJson(large.out.toUtf8()).array();
    ASSERT_EQ(files.size(), 2);
    EXPECT_EQ(files[0].toObject()["kind"], "diskImage");
    EXPECT_EQ(tarvik({"large", "--min", "lots"}).exitCode, 2);

    const Outcome dupes = tarvik({"dupes", "--json"});
    const QJsonArray groups = QJsonDocument::fromJson(dupes.out.toUtf8()).array();
    ASSERT_EQ(groups.size(), 1);
    EXPECT_TRUE(groups[0].toObject()["files"].toArray()[0].toObject()["path"].toString().endsWith(
        "first.iso")); // the oldest is the original

    // Names that need escaping in JSON come back as they are.
    const QString odd = QString::fromUtf8("/Music/\"tab\there\"\nsecond line \x01 ünï.flac");
    writeFile(home_.path() + odd, QByteArray(2'000, 'm'));
    writeFile(home_.path() + "/Music/plain.flac", QByteArray(2'000, 'm'));
    const Outcome small = tarvik({"dupes", "--min", "1000", "--json"});
    QJsonParseError error{};
    const QJsonArray both = QJsonDocument::fromJson(small.out.toUtf8(), &error).array();
    ASSERT_EQ(error.error, QJsonParseError::NoError) << small.out.toStdString();
    ASSERT_EQ(both.size(), 2);
    const QJsonObject music = both[1].toObject();
    EXPECT_EQ(music["fileSize"].toInteger(), 2'000);
    EXPECT_EQ(music["wastedBytes"].toInteger(), music["files"][1]["freed"].toInteger());
    QStringList paths;
    for (const auto& f : music["files"].toArray()) {
        paths << f.toObject()["path"].toString();
        EXPECT_TRUE(
            QDateTime::fromString(f.toObject()["modified"].toString(), Qt::ISODate).isValid());
    }
    EXPECT_TRUE(paths.contains(home_.path() + odd)) << paths.join('|').toStdString();
    QFile::remove(home_.path() + odd);
    QFile::remove(home_.path() + "/Music/plain.flac");

    // Without a terminal and without --yes nothing is removed.
    EXPECT_EQ(tarvik({"dupes", "--delete"}).exitCode, 2);
    EXPECT_TRUE(QFile::exists(home_.path() + "/Documents/second.iso"));
    const Outcome removed = tarvik({"dupes", "--delete", "--yes", "--mode", "deletePermanently"});
    EXPECT_EQ(removed.exitCode, 0) << removed.err.toStdString();
    EXPECT_FALSE(QFile::exists(home_.path() + "/Documents/second.iso"));
    EXPECT_TRUE(QFile::exists(home_.path() + "/Downloads/first.iso"));
    EXPECT_TRUE(tarvik({"dupes"}).out.contains("No duplicates found."));
}

TEST_F(TarvikCommand, DupesLeavesOutACopyItCannotRead) {
    const QByteArray data(70'000, 'r');
    writeFile(home_.path() + "/Documents/report.pdf", data);
    writeFile(home_.path() + "/Downloads/report.pdf", data);
    writeFile(home_.path() + "/Private/report.pdf", data);
    QFile::setPermissions(home_.path() + "/Private/report.pdf", {});
    if (::geteuid() == 0) {
        // Root reads everything: run as nobody, as a user would.
        QFile::setPermissions(home_.path(), QFile::permissions(home_.path()) |
                                                QFileDevice::ReadOther | QFileDevice::ExeOther);
        if (!run_.asUnprivilegedUser()) {
            GTEST_SKIP() << "setpriv (util-linux) is needed to run as another user";
        }
    }
    const Outcome dupes = tarvik({"dupes", "--min", "1", "--json"});
    ASSERT_EQ(dupes.exitCode, 0) << dupes.err.toStdString();
    const QJsonArray groups = QJsonDocument::fromJson(dupes.out.toUtf8()).array();
    ASSERT_EQ(groups.size(), 1) << dupes.out.toStdString();
    const QJsonArray files = groups[0].toObject()["files"].toArray();
    ASSERT_EQ(files.size(), 2);
    for (const auto& f : files) {
        EXPECT_FALSE(f.toObject()["path"].toString().contains("/Private/"));
    }
}

TEST_F(TarvikCommand, AwakeSchedulesAreAddedListedAndRemoved) {
    const Outcome added =
        tarvik({"awake", "schedules", "add", "--name", "Work", "--from", "09:00", "--to", "17:30"});
    ASSERT_EQ(added.exitCode, 0) << added.err.toStdString();
    EXPECT_EQ(tarvik({"awake", "schedules", "add", "--days", "sat,sun", "--from", "22:00", "--to",
                      "06:00"})
                  .out.trimmed(),
              "Added “Schedule”: Sat, Sun 22:00–06:00 (next day). Ends the next day.");

    // Bad input changes nothing and says what is wanted.
    const QByteArray before = readAll(conf());
    for (const QStringList& bad :
         {QStringList{"awake", "schedules", "add", "--from", "09:00", "--to", "09:00"},
          QStringList{"awake", "schedules", "add", "--from", "9", "--to", "17:00"},
          QStringList{"awake", "schedules", "add", "--days", "funday", "--from", "09:00", "--to",
                      "10:00"},
          QStringList{"awake", "schedules", "remove", "Holidays"},
          QStringList{"awake", "--for", "soon"}, QStringList{"awake", "--until", "25:00"},
          QStringList{"awake", "--for", "1h", "--until", "17:00"}}) {
        const Outcome r = tarvik(bad);
        EXPECT_EQ(r.exitCode, 2) << bad.join(' ').toStdString();
        EXPECT_FALSE(r.err.isEmpty()) << bad.join(' ').toStdString();
    }
    EXPECT_TRUE(tarvik({"awake", "schedules", "add", "--from", "09:00", "--to", "09:00"})
                    .err.contains("Start and end must differ."));
    EXPECT_EQ(readAll(conf()), before);

    const auto list =
        QJsonDocument::fromJson(tarvik({"awake", "schedules", "list", "--json"}).out.toUtf8())
            .array();
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list[0]["name"], "Work");
    EXPECT_EQ(list[0]["weekdays"].toArray().size(), 5);
    EXPECT_EQ(list[1]["durationMinutes"], 480);

    ASSERT_EQ(tarvik({"awake", "schedules", "remove", "work"}).exitCode, 0);
    const QString id = list[1]["id"].toString().left(8);
    ASSERT_EQ(tarvik({"awake", "schedules", "remove", id}).exitCode, 0);
    EXPECT_TRUE(tarvik({"awake", "schedules", "list"}).out.contains("No keep-awake schedules"));

    // A damaged store (settings set refuses such a value; the file can still be edited by hand):
    // no schedules, and the reason.
    EXPECT_EQ(tarvik({"settings", "set", "keepAwakeSchedules", "[{oops"}).exitCode, 2);
    {
        QSettings file(conf(), QSettings::NativeFormat);
        file.setValue("keepAwakeSchedules", "[{oops");
    }
    const Outcome damaged = tarvik({"awake", "status"});
    EXPECT_EQ(damaged.exitCode, 0);
    EXPECT_TRUE(damaged.err.contains("couldn't be read")) << damaged.err.toStdString();
}

TEST_F(TarvikCommand, AwakeHoldsLogindsLockUntilInterrupted) {
    tarvik::test::PrivateBus bus;
    if (!withMockLogind(bus)) {
        GTEST_SKIP() << "needs dbus-daemon and python3-dbusmock";
    }

    QProcess holder;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", home_.path());
    env.insert("XDG_CONFIG_HOME", home_.path() + "/.config");
    env.insert("DBUS_SYSTEM_BUS_ADDRESS", bus.address());
    env.insert("DBUS_SESSION_BUS_ADDRESS", bus.address());
    holder.setProcessEnvironment(env);
    holder.start(TARVIK_BINARY, {"awake", "--for", "2h"});
    ASSERT_TRUE(holder.waitForReadyRead(10000));
    const QString said = QString::fromUtf8(holder.readAllStandardOutput());
    EXPECT_TRUE(said.startsWith("Keeping the computer awake: ")) << said.toStdString();
    EXPECT_TRUE(said.contains(", then your sleep settings apply.")) << said.toStdString();

    const auto status = [&] {
        return QJsonDocument::fromJson(tarvik({"awake", "status", "--json"}).out.toUtf8()).object();
    };
    const QJsonObject held = status();
    EXPECT_EQ(held["keptAwake"], true);
    ASSERT_EQ(held["holders"].toArray().size(), 1);
    EXPECT_EQ(held["holders"][0]["what"], "idle:sleep");

    ::kill(static_cast<pid_t>(holder.processId()), SIGINT);
    ASSERT_TRUE(holder.waitForFinished(10000));
    EXPECT_EQ(holder.exitCode(), 0);
    EXPECT_TRUE(holder.readAllStandardOutput().contains("Stopped keeping awake"));
    QJsonObject after = status();
    for (int i = 0; i < 50 && after["keptAwake"] != false; ++i) {
        QThread::msleep(50);
        after = status();
    }
    EXPECT_EQ(after["keptAwake"], false);
}

TEST_F(TarvikCommand, AwakeForALengthStopsByItselfWhenItEnds) {
    tarvik::test::PrivateBus bus;
    if (!withMockLogind(bus)) {
        GTEST_SKIP() << "needs dbus-daemon and python3-dbusmock";
    }

    // The shortest length the command takes is a minute; nothing interrupts it.
    QElapsedTimer took;
    took.start();
    const Outcome r = tarvik({"awake", "--for", "1m"}, {}, 110000);
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.startsWith("Keeping the computer awake: ")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("Stopped keeping awake")) << r.out.toStdString();
    EXPECT_GE(took.elapsed(), 59000); // it held for its minute, not less
    const auto status = [&] {
        return QJsonDocument::fromJson(tarvik({"awake", "status", "--json"}).out.toUtf8()).object();
    };
    QJsonObject after = status();
    for (int i = 0; i < 50 && after["keptAwake"] != false; ++i) {
        QThread::msleep(50);
        after = status();
    }
    EXPECT_EQ(after["keptAwake"], false);
}
