// tarvik brew against a stand-in brew.
#include "tests/support/tarvik_command.h"
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using tarvik::test::readAll;
using tarvik::test::writeFile;

using tarvik::test::Outcome;
using tarvik::test::TarvikCommand;

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
