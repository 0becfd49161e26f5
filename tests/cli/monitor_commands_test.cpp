// tarvik monitor, ps and health: readings, processes and issues.
#include "tests/support/tarvik_command.h"
#include "tests/support/tarvik_run.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <gtest/gtest.h>

using tarvik::test::Outcome;
using tarvik::test::TarvikCommand;

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
    EXPECT_TRUE(
        QRegularExpression("\n[0-9,.]+ processes, .+ in memory\n$").match(top.out).hasMatch())
        << top.out.toStdString();
    EXPECT_EQ(tarvik({"ps", "--sort", "size"}).exitCode, 2);

    const Outcome refused = tarvik({"quit", "1"});
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_TRUE(refused.err.contains("is part of the system and can't be quit from here."))
        << refused.err.toStdString();

    const Outcome quit = tarvik({"quit", QString::number(pid)});
    EXPECT_EQ(quit.exitCode, 0) << quit.err.toStdString();
    EXPECT_EQ(quit.out.trimmed(), QString("“sleep” (PID %1) has quit.").arg(pid));
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
