// tarvik clean, junk, size, large and dupes: finding and removing from the command line.
#include "tests/support/tarvik_command.h"
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>
#include <unistd.h>

using tarvik::test::writeFile;

using tarvik::test::Outcome;
using tarvik::test::TarvikCommand;

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
    EXPECT_TRUE(mixed.out.startsWith("Deleted 1 item, ")) << mixed.out.toStdString();
    EXPECT_TRUE(mixed.out.contains(" freed. 2 items couldn't be removed.\n"));

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
