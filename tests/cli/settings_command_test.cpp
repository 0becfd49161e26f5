// tarvik settings: one store, and bad values refused.
#include "tests/support/tarvik_command.h"
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using tarvik::test::readAll;

using tarvik::test::Outcome;
using tarvik::test::TarvikCommand;

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
    EXPECT_EQ(keys.size(), 19);
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
