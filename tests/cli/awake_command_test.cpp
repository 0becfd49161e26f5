// tarvik awake: schedules and logind's lock.
#include "tests/support/private_bus.h"
#include "tests/support/tarvik_command.h"
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>
#include <QThread>
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

using tarvik::test::readAll;

using tarvik::test::Outcome;
using tarvik::test::TarvikCommand;

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
