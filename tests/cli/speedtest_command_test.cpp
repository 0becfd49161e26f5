// tarvik speedtest against a local server.
#include "tests/support/speed_server.h"
#include "tests/support/tarvik_command.h"
#include "tests/support/tarvik_run.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using tarvik::test::Outcome;
using tarvik::test::TarvikCommand;

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
