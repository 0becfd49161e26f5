#include "core/cleanup/cleaner.h"
#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/directory_sizer.h"
#include "core/cleanup/duplicate_finder.h"
#include "core/cleanup/free_space_recorder.h"
#include "core/sys/json_file.h"
#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <set>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace tarvik;

namespace {

void write(const QString& path, qint64 bytes) {
    QDir().mkpath(path.section('/', 0, -2));
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(QByteArray(bytes, 'x'));
}

std::int64_t allocated(const QString& path) {
    struct stat st {};
    return ::lstat(QFile::encodeName(path).constData(), &st) == 0 ? st.st_blocks * 512 : 0;
}

bool exists(const QString& path) {
    struct stat st {};
    return ::lstat(QFile::encodeName(path).constData(), &st) == 0;
}

// Marks a file immutable (even root cannot remove it); false where the file system refuses.
bool setImmutable(const QString& path, bool on) {
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK);
    if (fd < 0) {
        return false;
    }
    int flags = 0;
    bool ok = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    if (ok) {
        flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
        ok = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    }
    ::close(fd);
    return ok;
}

struct Sandbox {
    QTemporaryDir dir;
    QString home;
    QString outside;
    Sandbox()
        : home(QDir(dir.path()).canonicalPath() + "/home"),
          outside(QDir(dir.path()).canonicalPath() + "/outside") {
        QDir().mkpath(home);
        QDir().mkpath(outside);
    }
    Cleaner cleaner() const {
        return Cleaner(SafetyGuard(home, {}), Trash(home + "/.local/share/Trash"));
    }
    CleanableItem item(const QString& rel, std::int64_t size = 0) const {
        return {home + "/" + rel, size, std::nullopt, std::nullopt};
    }
};

} // namespace

TEST(Cleaner, DeletesFilesFoldersAndLinksAndCountsWhatWasReallyFreed) {
    Sandbox s;
    write(s.home + "/cache/a.bin", 10000);
    write(s.home + "/cache/sub/b.bin", 20000);
    write(s.home + "/single.log", 5000);
    write(s.outside + "/precious/data.txt", 3000);
    ASSERT_TRUE(QFile::link(s.outside + "/precious", s.home + "/link-to-outside"));
    const std::int64_t expected = allocated(s.home + "/cache/a.bin") +
                                  allocated(s.home + "/cache/sub/b.bin") +
                                  allocated(s.home + "/single.log");

    std::vector<std::pair<int, int>> progress;
    const CleanReport r =
        s.cleaner().remove({s.item("cache", 1), s.item("single.log", 1),
                            s.item("link-to-outside", 999), s.item("missing.txt", 1)},
                           RemovalMode::DeletePermanently,
                           [&](int done, int total) { progress.emplace_back(done, total); });
    EXPECT_EQ(r.freedBytes, expected); // measured, not the scanner's stale 1s and 999
    ASSERT_EQ(r.removed.size(), 3u);
    EXPECT_EQ(r.removedIDs(), (QSet<QString>{s.home + "/cache", s.home + "/single.log",
                                             s.home + "/link-to-outside"}));
    EXPECT_FALSE(exists(s.home + "/cache"));
    EXPECT_FALSE(exists(s.home + "/link-to-outside"));
    EXPECT_TRUE(exists(s.outside + "/precious/data.txt")); // the link went, its target stayed
    ASSERT_EQ(r.failures.size(), 1u);
    EXPECT_EQ(r.failures[0].message,
              "“missing.txt” couldn't be removed: No such file or directory.");
    EXPECT_EQ(progress, (std::vector<std::pair<int, int>>{{1, 4}, {2, 4}, {3, 4}, {4, 4}}));
}

TEST(Cleaner, RefusalsCarryTheGuardsSentenceAndTheRunGoesOn) {
    Sandbox s;
    write(s.home + "/Documents/keep.txt", 100);
    write(s.home + "/junk.tmp", 100);
    write(s.outside + "/x", 100);
    const CleanReport r = s.cleaner().remove({{s.home, 0, {}, {}},
                                              s.item("Documents"),
                                              {s.outside + "/x", 0, {}, {}},
                                              s.item("junk.tmp")},
                                             RemovalMode::DeletePermanently);
    ASSERT_EQ(r.failures.size(), 3u);
    EXPECT_EQ(r.failures[0].message, s.home + " is a protected location and was skipped.");
    EXPECT_EQ(r.failures[1].message,
              s.home + "/Documents is a protected location and was skipped.");
    EXPECT_EQ(r.failures[2].message,
              s.outside + "/x is outside the locations Tarvik is allowed to clean.");
    EXPECT_NE(r.failures[0].id, r.failures[1].id);
    EXPECT_EQ(r.removed.size(), 1u);
    EXPECT_TRUE(exists(s.home + "/Documents/keep.txt"));
    EXPECT_TRUE(exists(s.outside + "/x"));
}

TEST(Cleaner, AFileWithAnotherNameElsewhereFreesNothing) {
    Sandbox s;
    write(s.home + "/dup/a.bin", 50000);
    ASSERT_EQ(::link(QFile::encodeName(s.home + "/dup/a.bin").constData(),
                     QFile::encodeName(s.home + "/kept.bin").constData()),
              0);
    const CleanReport r = s.cleaner().remove({s.item("dup")}, RemovalMode::DeletePermanently);
    EXPECT_EQ(r.removed.size(), 1u);
    EXPECT_EQ(r.freedBytes, 0);
    EXPECT_TRUE(exists(s.home + "/kept.bin"));
}

TEST(Cleaner, AFolderWithAFileInUseIsPartiallyCleaned) {
    Sandbox s;
    write(s.home + "/app-cache/big.bin", 200000);
    write(s.home + "/app-cache/locked/held.db", 4000);
    if (!setImmutable(s.home + "/app-cache/locked/held.db", true)) {
        GTEST_SKIP() << "this file system cannot mark a file immutable";
    }
    const std::int64_t big = allocated(s.home + "/app-cache/big.bin");
    const std::int64_t held = allocated(s.home + "/app-cache/locked/held.db");
    const CleanReport r =
        s.cleaner().remove({s.item("app-cache", big + held)}, RemovalMode::DeletePermanently);
    setImmutable(s.home + "/app-cache/locked/held.db", false);
    EXPECT_TRUE(r.removed.empty()); // the item stays listed
    EXPECT_EQ(r.freedBytes, big);
    ASSERT_EQ(r.failures.size(), 1u);
    EXPECT_EQ(r.failures[0].message, QStringLiteral("Partially cleaned; %1 is in use or protected.")
                                         .arg(QString::number(held / 1000.0, 'f', 1) + " KB"));
    EXPECT_FALSE(exists(s.home + "/app-cache/big.bin"));
    EXPECT_TRUE(exists(s.home + "/app-cache/locked/held.db"));
}

TEST(Cleaner, CancellingStopsBetweenItemsWithAPartialReport) {
    Sandbox s;
    for (int i = 0; i < 5; ++i) {
        write(s.home + QString("/f%1").arg(i), 100);
    }
    std::atomic<bool> cancel = false;
    std::vector<CleanableItem> items;
    for (int i = 0; i < 5; ++i) {
        items.push_back(s.item(QString("f%1").arg(i)));
    }
    const CleanReport r = s.cleaner().remove(
        items, RemovalMode::DeletePermanently, [&](int done, int) { cancel = done == 2; }, &cancel);
    EXPECT_EQ(r.removed.size(), 2u);
    EXPECT_TRUE(r.failures.empty());
    EXPECT_TRUE(exists(s.home + "/f2"));
}

TEST(Cleaner, DeletingATrashEntryTakesItsDescriptionAlong) {
    Sandbox s;
    write(s.home + "/.local/share/Trash/files/old.txt", 100);
    write(s.home + "/.local/share/Trash/info/old.txt.trashinfo", 50);
    write(s.home + "/.local/share/Trash/info/other.txt.trashinfo", 50);
    const CleanReport r = s.cleaner().remove({s.item(".local/share/Trash/files/old.txt")},
                                             RemovalMode::DeletePermanently);
    EXPECT_EQ(r.removed.size(), 1u);
    EXPECT_FALSE(exists(s.home + "/.local/share/Trash/info/old.txt.trashinfo"));
    EXPECT_TRUE(exists(s.home + "/.local/share/Trash/info/other.txt.trashinfo"));
}

TEST(CleanupRun, GroupsKeepTheirModesProgressSpansAllAndOnlyRealCleanupsAreRecorded) {
    Sandbox s;
    write(s.home + "/a", 8192);
    write(s.home + "/b", 8192);
    write(s.home + "/c", 8192);
    const std::int64_t each = allocated(s.home + "/a"); // b and c take as much
    const QString timelinePath = s.home + "/timeline.json";
    FreeSpaceTimeline timeline(timelinePath);
    std::vector<double> fractions;
    const CleanReport r = runCleanup(
        s.cleaner(),
        {{{s.item("a")}, RemovalMode::DeletePermanently},
         {{s.item("b"), s.item("c")}, RemovalMode::MoveToTrash}},
        "System Junk", [&](double f) { fractions.push_back(f); }, nullptr, &timeline);
    EXPECT_EQ(r.removed.size(), 3u);
    EXPECT_TRUE(exists(s.home + "/.local/share/Trash/files/b"));
    ASSERT_EQ(fractions.size(), 3u);
    EXPECT_NEAR(fractions[0], 1.0 / 3, 1e-9);
    EXPECT_DOUBLE_EQ(fractions[2], 1.0);

    // What went to the Trash is still on the disk: counted apart, never as freed.
    EXPECT_EQ(r.removedModes,
              (std::vector<RemovalMode>{RemovalMode::DeletePermanently, RemovalMode::MoveToTrash,
                                        RemovalMode::MoveToTrash}));
    EXPECT_EQ(r.freedBytes, each);
    EXPECT_EQ(r.trashedBytes, 2 * each);

    FreeSpaceTimeline reread(timelinePath);
    reread.load();
    ASSERT_EQ(reread.records().size(), 1u);
    EXPECT_EQ(reread.records()[0].source, "System Junk");
    EXPECT_EQ(reread.records()[0].itemCount, 1);
    EXPECT_EQ(reread.records()[0].freedBytes, r.freedBytes);

    // A run in which everything fails leaves no record, and so does one that only moved to the
    // Trash.
    runCleanup(s.cleaner(), {{{s.item("gone")}, RemovalMode::DeletePermanently}}, "System Junk", {},
               nullptr, &timeline);
    write(s.home + "/d", 8192);
    const CleanReport trashed = runCleanup(s.cleaner(), {{{s.item("d")}, RemovalMode::MoveToTrash}},
                                           "System Junk", {}, nullptr, &timeline);
    EXPECT_EQ(trashed.removed.size(), 1u);
    EXPECT_EQ(trashed.freedBytes, 0);
    reread.load();
    EXPECT_EQ(reread.records().size(), 1u);
}

TEST(FreeSpaceTimeline, KeepsAnHourlyHistoryAndSetsADamagedFileAsideInsteadOfLosingIt) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/t.json";
    FreeSpaceTimeline t(path);
    const QDateTime start = QDateTime::fromSecsSinceEpoch(1'800'000'000);
    EXPECT_TRUE(t.recordSampleIfDue({start, 100, 1000}));
    EXPECT_FALSE(t.recordSampleIfDue({start.addSecs(1800), 90, 1000}));
    EXPECT_TRUE(t.recordSampleIfDue({start.addSecs(3600), 80, 1000}));
    FreeSpaceTimeline again(path);
    again.load();
    ASSERT_EQ(again.samples().size(), 2u);
    EXPECT_EQ(again.samples()[1].freeBytes, 80);

    // Damaged: read as empty, and kept aside when the next cleanup is recorded.
    const QByteArray damaged = "{\"cleanups\": [{\"date\": \"not a date\"}], \"samples\": 7";
    test::writeFile(path, damaged);
    again.load();
    EXPECT_TRUE(again.samples().empty());
    ASSERT_TRUE(again.record({start, 5, 1, "System Junk"}));
    EXPECT_EQ(test::readAll(path + ".damaged"), damaged);
    again.load();
    EXPECT_EQ(again.records().size(), 1u);

    // One that can't be opened is never written over.
    if (::geteuid() != 0) {
        QFile::setPermissions(path, {});
        EXPECT_FALSE(again.record({start, 5, 1, "System Junk"}));
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    QDir().mkpath(dir.path() + "/folder.json");
    EXPECT_FALSE(FreeSpaceTimeline(dir.path() + "/folder.json").record({start, 5, 1, "x"}));
    EXPECT_TRUE(QDir(dir.path() + "/folder.json").exists());
}

TEST(FreeSpaceTimeline, CleanupsEndingTogetherAreAllRecordedAndOnlyTheNewestThousandKept) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/t.json";
    const QDateTime start = QDateTime::fromSecsSinceEpoch(1'800'000'000);
    {
        // A history written before there was a limit.
        QJsonArray many;
        for (int i = 0; i < 1100; ++i) {
            many.append(CleanupRecord{start.addSecs(i), i + 1, 1, "old"}.toJson());
        }
        test::writeFile(path, QJsonDocument(QJsonObject{{"cleanups", many}}).toJson());
        ASSERT_TRUE(FreeSpaceTimeline(path).recordSampleIfDue({start, 1, 2}));
    }
    FreeSpaceTimeline capped(path);
    capped.load();
    ASSERT_EQ(capped.records().size(), FreeSpaceTimeline::kMostRecords);
    EXPECT_EQ(capped.records().back().freedBytes, 1100);

    // Twenty cleanups that end at once, each in its own process's way: all twenty are kept.
    std::vector<std::thread> cleans;
    for (int i = 0; i < 20; ++i) {
        cleans.emplace_back([&, i] {
            FreeSpaceTimeline mine(path);
            EXPECT_TRUE(mine.record({start.addDays(1), 10'000 + i, 1, "together"}));
        });
    }
    for (auto& c : cleans) {
        c.join();
    }
    capped.load();
    EXPECT_EQ(capped.records().size(), FreeSpaceTimeline::kMostRecords);
    std::set<std::int64_t> together;
    for (const auto& r : capped.records()) {
        if (r.source == "together") {
            together.insert(r.freedBytes);
        }
    }
    EXPECT_EQ(together.size(), 20u);
    // A file of megabytes that no history reaches is not read into memory.
    test::writeFile(path, QByteArray(JsonFile::kLargest + 1, ' '));
    capped.load();
    EXPECT_TRUE(capped.records().empty());
}

TEST(FreeSpaceRecorder, SamplesTheHomeFileSystemIntoTheTimeline) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/Tarvik/free-space-timeline.json";
    FreeSpaceRecorder recorder(dir.path(), path);
    EXPECT_FALSE(recorder.record() && recorder.record()); // the second within the hour is not due
    FreeSpaceTimeline t(path);
    t.load();
    ASSERT_EQ(t.samples().size(), 1u);
    EXPECT_GT(t.samples()[0].totalBytes, 0);
    EXPECT_LE(t.samples()[0].freeBytes, t.samples()[0].totalBytes);
    EXPECT_FALSE(FreeSpaceRecorder("/no/such/home", path).record());
}

TEST(Cleaner, ACopyGoesOnlyWhileTheKeptFileIsStillAsTheSearchFoundIt) {
    Sandbox s;
    // Four groups of two, each original older than its copy.
    for (const char* name : {"edited", "moved", "copyEdited", "untouched"}) {
        for (const QString& folder : {s.home + "/orig/", s.home + "/copies/"}) {
            QDir().mkpath(folder);
            QFile f(folder + name);
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            f.write(QByteArray(40'000, name[0])); // each group its own contents
        }
        const std::string original = QFile::encodeName(s.home + "/orig/" + name).toStdString();
        const timespec old[2] = {{1'000'000, 0}, {1'000'000, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, original.c_str(), old, 0), 0);
    }
    FileSearchOptions o;
    o.root = s.home;
    o.minimumSize = 1;
    const std::vector<DuplicateGroup> groups = DuplicateFinder(s.home).scan(o);
    ASSERT_EQ(groups.size(), 4u);
    std::vector<CleanableItem> copies;
    for (const DuplicateGroup& g : groups) {
        ASSERT_TRUE(g.files.front().path.contains("/orig/"));
        const auto chosen =
            g.removals([](const CleanableItem& f) { return f.path.contains("/copies/"); });
        ASSERT_EQ(chosen.size(), 1u);
        ASSERT_TRUE(chosen[0].keptCopy.has_value());
        copies.insert(copies.end(), chosen.begin(), chosen.end());
    }
    // While the confirmation waits: the original is edited (the copy is now the only copy of
    // the old contents), another original is moved away, and one copy is edited itself.
    {
        QFile f(s.home + "/orig/edited");
        ASSERT_TRUE(f.open(QIODevice::Append));
        f.write("new line");
    }
    ASSERT_TRUE(QFile::rename(s.home + "/orig/moved", s.outside + "/moved"));
    {
        QFile f(s.home + "/copies/copyEdited");
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        f.write("different");
    }
    const CleanReport r = s.cleaner().remove(copies, RemovalMode::DeletePermanently);
    ASSERT_EQ(r.removed.size(), 1u);
    EXPECT_EQ(r.removed[0].path, s.home + "/copies/untouched");
    for (const char* kept : {"edited", "moved", "copyEdited"}) {
        EXPECT_TRUE(exists(s.home + "/copies/" + kept)) << kept;
    }
    ASSERT_EQ(r.failures.size(), 3u);
    QStringList messages;
    for (const CleanFailure& f : r.failures) {
        messages << f.message;
    }
    EXPECT_TRUE(messages.contains("“edited” was left: the copy that stays, ~/orig/edited, "
                                  "changed or moved since the search."))
        << messages.join('\n').toStdString();
    EXPECT_TRUE(messages.contains("“moved” was left: the copy that stays, ~/orig/moved, changed "
                                  "or moved since the search."));
    EXPECT_TRUE(messages.contains("“copyEdited” changed since the search and was left as it is."));

    // Every file of a group chosen: the original stays all the same.
    const DuplicateGroup& g = groups.front();
    EXPECT_EQ(g.removals([](const CleanableItem&) { return true; }).size(), g.files.size() - 1);
}

TEST(Cleaner, AFolderMerelyNamedTrashKeepsItsNeighboursAndTheTrashIsNeverTrashedAgain) {
    Sandbox s;
    // A project's own "Trash/files" next to an "info" folder: not the freedesktop Trash.
    write(s.home + "/project/Trash/files/x", 100);
    write(s.home + "/project/Trash/info/x.trashinfo", 50);
    CleanReport r =
        s.cleaner().remove({s.item("project/Trash/files/x")}, RemovalMode::DeletePermanently);
    EXPECT_EQ(r.removed.size(), 1u);
    EXPECT_TRUE(exists(s.home + "/project/Trash/info/x.trashinfo"));

    // An item of the real Trash is not moved into the Trash a second time.
    write(s.home + "/.local/share/Trash/files/X", 100);
    write(s.home + "/.local/share/Trash/info/X.trashinfo", 50);
    r = s.cleaner().remove({s.item(".local/share/Trash/files/X")}, RemovalMode::MoveToTrash);
    ASSERT_EQ(r.failures.size(), 1u);
    EXPECT_EQ(r.failures[0].message, "“X” is in the Trash already.");
    EXPECT_TRUE(exists(s.home + "/.local/share/Trash/files/X"));
    EXPECT_TRUE(exists(s.home + "/.local/share/Trash/info/X.trashinfo"));
    EXPECT_FALSE(exists(s.home + "/.local/share/Trash/files/X.2"));
}
