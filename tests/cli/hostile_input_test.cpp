// What other programs write, at its worst: the real tarvik given hostile logs, answers and
// history files in a temporary home. Memory is measured per child (wait4); times never are.
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>
#include <vector>

using tarvik::test::Outcome;
using tarvik::test::TarvikRun;
using tarvik::test::writeFile;

namespace {

class HostileInput : public ::testing::Test {
protected:
    QString path(const QString& rel) const { return home_.path() + "/" + rel; }
    Outcome tarvik(const QStringList& args) { return run_(args, home_.path()); }
    QTemporaryDir home_;
    TarvikRun run_;
};

QByteArray claudeLine(const QString& id, int output) {
    return QStringLiteral(R"({"timestamp":"%1","requestId":"r-%2","message":{"id":"%2",)"
                          R"("model":"claude-sonnet-4-5","usage":{"input_tokens":0,)"
                          R"("output_tokens":%3}}})")
        .arg(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs), id)
        .arg(output)
        .toUtf8();
}

} // namespace

TEST_F(HostileInput, ALogLineOfAGigabyteIsSkippedInBoundedMemoryAndTheRestStillCounts) {
    const QString log = path(".claude/projects/p/s.jsonl");
    writeFile(log, claudeLine("before", 1000) + "\n");
    {
        // One line of 1 GiB that looks like usage (sparse: a few KiB on disk), then an answer.
        const int fd = ::open(QFile::encodeName(log).constData(), O_WRONLY | O_APPEND);
        ASSERT_GE(fd, 0);
        const QByteArray head = R"({"message":{"usage":{"output_tokens":)";
        ASSERT_EQ(::write(fd, head.constData(), head.size()), head.size());
        const off_t end = ::lseek(fd, 0, SEEK_END) + (off_t{1} << 30);
        ASSERT_EQ(::ftruncate(fd, end), 0);
        ::lseek(fd, 0, SEEK_END);
        const QByteArray tail = "1}}}\n" + claudeLine("after", 2000) + "\n";
        ASSERT_EQ(::write(fd, tail.constData(), tail.size()), tail.size());
        ::close(fd);
    }
    const Outcome o = run_.measured({"agents", "cost", "--json"}, home_.path());
    ASSERT_EQ(o.exitCode, 0) << o.err.toStdString();
    const QJsonObject cost = QJsonDocument::fromJson(o.out.toUtf8()).object();
    EXPECT_EQ(cost["totalTokens"].toDouble(), 3000) << o.out.toStdString();
    EXPECT_EQ(cost["skippedLines"].toDouble(), 1);
    // Reading the gigabyte line whole took 2.1 GB; skipping it costs one 16 MiB attempt.
    EXPECT_LT(o.peakKiB, 400 * 1024) << "peak " << o.peakKiB << " KiB";

    const Outcome text = tarvik({"agents", "cost"});
    EXPECT_TRUE(text.out.contains("One log line longer than 16 MiB was skipped."))
        << text.out.toStdString();
}

TEST_F(HostileInput, AnswersSayWhatWasLookedAtAndHowMuch) {
    // ps for scripts gives every process unless asked for fewer; a terminal gets twenty.
    std::vector<std::unique_ptr<QProcess>> sleepers;
    for (int i = 0; i < 25; ++i) {
        sleepers.push_back(std::make_unique<QProcess>());
        sleepers.back()->start("sleep", {"30"});
    }
    for (auto& s : sleepers) {
        ASSERT_TRUE(s->waitForStarted());
    }
    const Outcome all = tarvik({"ps", "--json", "--interval", "0.1"});
    ASSERT_EQ(all.exitCode, 0) << all.err.toStdString();
    EXPECT_GT(QJsonDocument::fromJson(all.out.toUtf8())["processes"].toArray().size(), 25);
    const Outcome few = tarvik({"ps", "--json", "--interval", "0.1", "--limit", "3"});
    EXPECT_EQ(QJsonDocument::fromJson(few.out.toUtf8())["processes"].toArray().size(), 3);
    const Outcome text = tarvik({"ps", "--interval", "0.1"});
    EXPECT_LE(text.out.count('\n'), 22) << text.out.toStdString();
    for (auto& s : sleepers) {
        s->kill();
        s->waitForFinished();
    }

    // A glance at the machine does not claim what only a few seconds of watching can tell.
    const Outcome status = tarvik({"status"});
    EXPECT_FALSE(status.out.contains("Nothing needs your attention")) << status.out.toStdString();

    // Where the window has a field to paste a key into, the terminal is given the command.
    run_.env["TARVIK_OPENROUTER_API"] = "http://127.0.0.1:1/";
    run_.env["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent";
    run_.env["PATH"] = "/nonexistent";
    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.enabled", "openRouter"}).exitCode, 0);
    const Outcome agents = tarvik({"agents"});
    EXPECT_TRUE(agents.out.contains("Paste an OpenRouter API key (make one at "))
        << agents.out.toStdString();
    EXPECT_TRUE(agents.out.contains("Save one with: tarvik agents key set openrouter < key.txt"));
    EXPECT_FALSE(agents.out.contains("below"));
}

TEST_F(HostileInput, ANoOnTheTerminalIsToldApartFromNoTerminal) {
    const QString script = QStandardPaths::findExecutable("script");
    if (script.isEmpty()) {
        GTEST_SKIP() << "script (util-linux) is needed for a terminal";
    }
    writeFile(path("scratch.tmp"), "scratch");
    // The command runs on a pseudo-terminal, and answers "n".
    TarvikRun onTerminal = run_;
    onTerminal.program = script;
    onTerminal.input = "n\n";
    const Outcome o = onTerminal(
        {"-qec", QStringLiteral("'%1' clean '%2'").arg(TARVIK_BINARY, path("scratch.tmp")),
         "/dev/null"},
        home_.path());
    EXPECT_EQ(o.exitCode, 2) << o.out.toStdString() << o.err.toStdString();
    EXPECT_TRUE(o.out.contains("Nothing was removed.")) << o.out.toStdString();
    EXPECT_FALSE(o.out.contains("Run this in a terminal")) << o.out.toStdString();
    EXPECT_TRUE(QFile::exists(path("scratch.tmp")));
}
