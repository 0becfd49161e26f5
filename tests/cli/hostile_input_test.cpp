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
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

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
    EXPECT_LT(o.peakKiB, 300 * 1024) << "peak " << o.peakKiB << " KiB";

    const Outcome text = tarvik({"agents", "cost"});
    EXPECT_TRUE(text.out.contains("One log line longer than 16 MiB was skipped."))
        << text.out.toStdString();
}
