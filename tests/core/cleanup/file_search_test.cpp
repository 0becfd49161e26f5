// Large and old files and duplicates, on real trees in a temporary home.
#include "core/cleanup/duplicate_finder.h"
#include "core/cleanup/large_file_scanner.h"
#include "tests/support/temp_home.h"

#include <QFile>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

using namespace tarvik;
namespace fs = std::filesystem;

namespace {

// A file of `size` bytes: `fill` repeated, or a sparse hole when fill is 0.
void makeFile(const QString& path, std::int64_t size, char fill = 'x',
              std::optional<int> daysOld = std::nullopt) {
    fs::create_directories(fs::path(path.toStdString()).parent_path());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    if (fill == 0) {
        f.resize(size);
    } else {
        const QByteArray block(64 * 1024, fill);
        for (std::int64_t left = size; left > 0; left -= block.size()) {
            f.write(block.constData(), std::min<std::int64_t>(left, block.size()));
        }
    }
    f.close();
    if (daysOld) {
        fs::last_write_time(path.toStdString(),
                            fs::file_time_type::clock::now() - std::chrono::hours(24 * *daysOld));
    }
}

std::vector<QString> names(const std::vector<FoundFile>& found, const QString& home) {
    std::vector<QString> out;
    for (const auto& f : found) {
        out.push_back(f.item.path.mid(home.size() + 1));
    }
    std::sort(out.begin(), out.end());
    return out;
}

} // namespace

TEST(FileKind, ByExtensionWithTheDockerImageRule) {
    EXPECT_EQ(fileKind("Docker.raw"), FileKind::VirtualMachine);
    EXPECT_EQ(fileKind("disk.RAW"), FileKind::Image);
    EXPECT_EQ(fileKind("backup.tar.GZ"), FileKind::Archive);
    EXPECT_EQ(fileKind("debian.iso"), FileKind::DiskImage);
    EXPECT_EQ(fileKind("vm.qcow2"), FileKind::VirtualMachine);
    EXPECT_EQ(fileKind("notes"), FileKind::Other);
    EXPECT_EQ(fileKind(".iso"), FileKind::Other); // a hidden name, not an extension
    EXPECT_EQ(fileKind("film."), FileKind::Other);
    EXPECT_EQ(title(FileKind::DiskImage), "Disk Images & Installers");
    EXPECT_EQ(sizeThreshold(100'000'000), 100'000'000);
    EXPECT_FALSE(sizeThreshold(123));
    EXPECT_EQ(ageFilterTitle(180), "Older than 6 months");
}

TEST(LargeFileScanner, ThresholdAgeAndWhatTheWalkLeavesOut) {
    test::TempHome home;
    const QString h = home.path();
    const std::int64_t mb = 1'000'000;
    makeFile(h + "/Movies/exact.mkv", 2 * mb);
    makeFile(h + "/Movies/just-under.mkv", 2 * mb - 8192);
    makeFile(h + "/Downloads/old.iso", 3 * mb, 'x', 400);
    makeFile(h + "/Downloads/naïve résumé.pdf", 3 * mb);           // multi-byte name
    makeFile(h + "/Downloads/two\nlines.zip", 3 * mb);             // a newline in the name
    makeFile(h + "/Apps/Editor.app/Contents/big.bin", 5 * mb);     // inside a bundle
    makeFile(h + "/.local/share/app/cache.db", 5 * mb);            // the apps' own data
    makeFile(h + "/.big.iso", 5 * mb);                             // hidden
    makeFile(h + "/.local/share/Trash/files/trashed.iso", 5 * mb); // already in the Trash
    makeFile(h + "/sparse.img", 50 * mb, 0);                       // takes almost no space
    fs::create_directory_symlink(h.toStdString(), (h + "/loop").toStdString());
    fs::create_symlink((h + "/Movies/exact.mkv").toStdString(), (h + "/link.mkv").toStdString());

    LargeFileScanner scanner(h);
    LargeFileScanner::Options o;
    o.root = h;
    o.minimumSize = 2 * mb; // allocated: 2,000,000 bytes take 2,002,944 on 4 KiB blocks
    std::int64_t progress = 0;
    const auto found = scanner.scan(o, [&](std::int64_t n) { progress = n; });
    EXPECT_EQ(names(found, h),
              (std::vector<QString>{"Downloads/naïve résumé.pdf", "Downloads/old.iso",
                                    "Downloads/two\nlines.zip", "Movies/exact.mkv"}));
    EXPECT_GE(found.front().item.size, 3 * mb); // largest first
    EXPECT_EQ(progress, 0);                     // fewer than 500 entries: no progress call

    o.olderThanDays = 365;
    const auto old = scanner.scan(o);
    ASSERT_EQ(old.size(), 1u);
    EXPECT_EQ(old[0].kind, FileKind::DiskImage);
    ASSERT_TRUE(old[0].item.modified);

    o.olderThanDays.reset();
    o.includeHidden = true;
    EXPECT_EQ(names(scanner.scan(o), h).size(), 5u); // ~/.big.iso; app data still left out
    o.includeLibrary = true;
    const auto all = names(scanner.scan(o), h);
    EXPECT_EQ(all.size(), 6u);
    EXPECT_NE(std::find(all.begin(), all.end(), ".local/share/app/cache.db"), all.end());

    // Cancelled before it starts: nothing, at once.
    std::atomic<bool> cancel = true;
    EXPECT_TRUE(scanner.scan(o, {}, &cancel).empty());
}

TEST(LargeFileScanner, AFileWithSeveralNamesIsOneRowAndExcludedFilesAreNeverListed) {
    test::TempHome home;
    const QString h = home.path();
    makeFile(h + "/Videos/film.mkv", 3'000'000);
    fs::create_directories((h + "/Backup/deep").toStdString());
    fs::create_hard_link((h + "/Videos/film.mkv").toStdString(),
                         (h + "/Backup/film-again.mkv").toStdString());
    fs::create_hard_link((h + "/Videos/film.mkv").toStdString(),
                         (h + "/Backup/deep/third.mkv").toStdString());
    makeFile(h + "/Shared/clip.mp4", 2'500'000);
    fs::create_directories((h + "/.hidden").toStdString());
    fs::create_hard_link((h + "/Shared/clip.mp4").toStdString(),
                         (h + "/.hidden/clip.mp4").toStdString()); // a name the search skips
    makeFile(h + "/Excluded/huge.iso", 4'000'000);
    makeFile(h + "/Videos/excluded.iso", 4'000'000);

    LargeFileScanner scanner(h);
    LargeFileScanner::Options o;
    o.root = h;
    o.minimumSize = 1'000'000;
    o.excluded = {h + "/Excluded", h + "/Videos/excluded.iso"};
    const auto found = scanner.scan(o);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_TRUE(found[0].item.path.endsWith("/Backup/deep/third.mkv")); // the first name by path
    ASSERT_TRUE(found[0].item.detail);
    EXPECT_TRUE(found[0].item.detail->contains(h + "/Backup/film-again.mkv"));
    EXPECT_TRUE(found[0].item.detail->contains(h + "/Videos/film.mkv"));
    EXPECT_TRUE(found[0].item.detail->contains("frees nothing"));
    ASSERT_TRUE(found[1].item.detail);
    EXPECT_TRUE(found[1].item.detail->contains("1 other name(s)"))
        << found[1].item.detail->toStdString();
}

TEST(DuplicateFinder, ThreeStagesHardLinksSparseFilesAndTheOldestKept) {
    test::TempHome home;
    const QString h = home.path();
    makeFile(h + "/a/one.bin", 1'000'000, 'a', 30);
    makeFile(h + "/b/two.bin", 1'000'000, 'a', 10);
    makeFile(h + "/c/three.bin", 1'000'000, 'a', 20);
    makeFile(h + "/small1.txt", 10, 'q');
    makeFile(h + "/small2.txt", 10, 'q');
    // Two files of 200 KiB that differ only in their last byte.
    makeFile(h + "/d/x.dat", 200 * 1024, 'z');
    makeFile(h + "/d/y.dat", 200 * 1024, 'z');
    {
        QFile f(h + "/d/y.dat");
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        f.seek(200 * 1024 - 1);
        f.write("!");
    }
    // Two names of one file: not copies of each other.
    makeFile(h + "/e/solo.bin", 300'000, 'h');
    fs::create_hard_link((h + "/e/solo.bin").toStdString(), (h + "/e/also.bin").toStdString());
    // Sparse files of one length that differ past the first 64 KiB: not copies.
    makeFile(h + "/s/left.img", 10'000'000, 0);
    makeFile(h + "/s/right.img", 10'000'000, 0);
    {
        QFile f(h + "/s/right.img");
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        f.seek(5'000'000);
        f.write("data");
    }

    DuplicateFinder finder(h);
    DuplicateFinder::Options o;
    o.root = h;
    o.minimumSize = 1;
    QStringList phases;
    const auto groups = finder.scan(o, [&](const QString& phase, std::int64_t, std::int64_t) {
        if (!phases.contains(phase)) {
            phases << phase;
        }
    });
    ASSERT_EQ(groups.size(), 2u);
    const DuplicateGroup& big = groups[0]; // the most waste first
    EXPECT_EQ(big.fileSize, 1'000'000);
    ASSERT_EQ(big.files.size(), 3u);
    EXPECT_TRUE(big.original()->path.endsWith("/a/one.bin")); // the oldest
    EXPECT_TRUE(big.files[1].path.endsWith("/c/three.bin"));
    EXPECT_EQ(big.wastedBytes(), big.files[1].size + big.files[2].size);
    EXPECT_GE(big.wastedBytes(), 2'000'000);
    EXPECT_EQ(big.id, DuplicateFinder::hash((h + "/a/one.bin").toStdString()));
    EXPECT_EQ(groups[1].fileSize, 10);

    const DuplicateGroup left =
        big.keeping([](const CleanableItem& i) { return !i.path.endsWith("three.bin"); });
    EXPECT_EQ(left.files.size(), 2u);
    EXPECT_EQ(left.id, big.id);
    EXPECT_EQ(left.wastedBytes(), big.files[2].size);

    // A file just under the threshold is never compared.
    o.minimumSize = 1'000'001;
    EXPECT_TRUE(finder.scan(o).empty());

    // A hard-linked copy: the note says removing it frees nothing.
    fs::create_hard_link((h + "/b/two.bin").toStdString(), (h + "/two-again.bin").toStdString());
    o.minimumSize = 1'000'000;
    const auto linked = finder.scan(o);
    ASSERT_EQ(linked.size(), 1u);
    ASSERT_EQ(linked[0].files.size(), 3u);
    std::int64_t freedNothing = 0;
    for (std::size_t i = 0; i < linked[0].files.size(); ++i) {
        if (linked[0].files[i].detail) {
            EXPECT_TRUE(linked[0].files[i].detail->contains("frees nothing"));
            EXPECT_EQ(linked[0].freed[i], 0);
            ++freedNothing;
        }
    }
    EXPECT_EQ(freedNothing, 1);
}

TEST(DuplicateFinder, HashesInChunksAndRefusesWhatItCannotRead) {
    test::TempHome home;
    const QString path = home.path() + "/three-mb.bin";
    makeFile(path, 3 * 1024 * 1024 + 17, 'k');
    const auto whole = DuplicateFinder::hash(path.toStdString());
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->size(), 64);
    EXPECT_NE(DuplicateFinder::hash(path.toStdString(), 65'536), whole);
    EXPECT_FALSE(DuplicateFinder::hash((home.path() + "/missing").toStdString()));
    // A file that grew after the walk measured it is not compared.
    EXPECT_FALSE(DuplicateFinder::hash(path.toStdString(), std::nullopt, 100));
    // A symbolic link is never followed.
    fs::create_symlink(path.toStdString(), (home.path() + "/link").toStdString());
    EXPECT_FALSE(DuplicateFinder::hash((home.path() + "/link").toStdString()));
}

TEST(DuplicateFinder, OddNamesUnreadableFilesLinkLoopsAndExclusions) {
    test::TempHome home;
    const QString h = home.path();
    // Copies under names with a newline, quotes, multi-byte letters and a leading dash.
    const QString odd = h + QString::fromUtf8("/Fotos/été \"2024\"\nzweite-Zeile.jpg");
    makeFile(odd, 5000, 'p', 40);
    makeFile(h + QString::fromUtf8("/Fotos/-日本.jpg"), 5000, 'p', 30);
    makeFile(h + "/Fotos/copy.jpg", 5000, 'p', 20);
    // The same age: the path decides which one is the original.
    makeFile(h + "/same/b.txt", 300, 's', 5);
    makeFile(h + "/same/a.txt", 300, 's', 5);
    // An unreadable copy is never part of a group (the walk runs as root in CI only when the
    // permission bits are ignored, so only check when they are not).
    makeFile(h + "/locked/secret.bin", 7000, 'u');
    makeFile(h + "/open/secret.bin", 7000, 'u');
    ::chmod((h + "/locked/secret.bin").toLocal8Bit().constData(), 0);
    const bool bitsHold = ::access((h + "/locked/secret.bin").toLocal8Bit().constData(), R_OK) != 0;
    // Link loops and a link to a copy are never followed.
    fs::create_directories((h + "/loop").toStdString());
    fs::create_directory_symlink("..", (h + "/loop/up").toStdString());
    fs::create_symlink((h + "/loop/self").toStdString(), (h + "/loop/self").toStdString());
    fs::create_symlink((h + "/Fotos/copy.jpg").toStdString(),
                       (h + "/loop/copy-link.jpg").toStdString());
    // Excluded: a folder holding a copy, and a single file.
    makeFile(h + "/Archive/old/copy.jpg", 5000, 'p', 50);
    makeFile(h + "/same/excluded.txt", 300, 's', 1);

    DuplicateFinder finder(h);
    DuplicateFinder::Options o;
    o.root = h;
    o.minimumSize = 1;
    o.excluded = {h + "/Archive", h + "/same/excluded.txt"};
    auto groups = finder.scan(o);
    if (!bitsHold) {
        std::erase_if(groups, [](const DuplicateGroup& g) { return g.fileSize == 7000; });
    }
    ASSERT_EQ(groups.size(), 2u);
    const DuplicateGroup& photos = groups[0];
    ASSERT_EQ(photos.files.size(), 3u); // the excluded, older copy is neither kept nor offered
    EXPECT_EQ(photos.original()->path, odd);
    EXPECT_TRUE(photos.files[1].path.endsWith(QString::fromUtf8("/-日本.jpg")));
    const DuplicateGroup& same = groups[1];
    ASSERT_EQ(same.files.size(), 2u);
    EXPECT_TRUE(same.original()->path.endsWith("/same/a.txt"));

    // The root inside an excluded folder: nothing is offered.
    o.excluded = {h + "/Fotos"};
    o.root = h + "/Fotos";
    EXPECT_TRUE(finder.scan(o).empty());
    // A sibling whose name only starts like the excluded folder is still searched.
    o.excluded = {h + "/Foto"};
    EXPECT_EQ(finder.scan(o).size(), 1u);
}

TEST(DuplicateFinder, AWideTreeListedByEveryThreadGivesOneGroupPerContents) {
    test::TempHome home;
    const QString h = home.path();
    // Enough folders for the walk to list them on several threads; each of 40 contents has a
    // copy in every tenth folder, and one file of each has two more names (hard links) in
    // other folders.
    for (int folder = 0; folder < 200; ++folder) {
        for (int file = 0; file < 4; ++file) {
            const int contents = (folder * 4 + file) % 40;
            const QString path = h + QStringLiteral("/d%1/f%2.dat").arg(folder).arg(file);
            makeFile(path, 1000 + contents, static_cast<char>('A' + contents % 26), contents);
        }
    }
    for (int contents = 0; contents < 40; ++contents) {
        const QString first =
            h + QStringLiteral("/d%1/f%2.dat").arg(contents / 4).arg(contents % 4);
        for (int n = 0; n < 2; ++n) {
            fs::create_hard_link(
                first.toStdString(),
                (h + QStringLiteral("/d%1/link%2-%3.dat").arg(199 - contents).arg(contents).arg(n))
                    .toStdString());
        }
    }
    DuplicateFinder::Options o;
    o.root = h;
    o.minimumSize = 1;
    const DuplicateSet set = DuplicateFinder(h).find(o);
    ASSERT_EQ(set.size(), 40u);
    std::int64_t waste = 0;
    for (std::size_t i = 0; i < set.size(); ++i) {
        const DuplicateGroup g = set.group(i);
        EXPECT_EQ(g.files.size(), 20u) << g.fileSize; // 800 files / 40 contents, links aside
        int linked = 0;
        for (std::size_t k = 0; k < g.files.size(); ++k) {
            if (g.files[k].detail) {
                ++linked;
                EXPECT_EQ(g.freed[k], 0);
                EXPECT_EQ(g.files[k].detail->count(".dat"), 2); // both other names listed
            }
        }
        EXPECT_EQ(linked, 1);
        EXPECT_EQ(g.wastedBytes(), set.at(i).wasted);
        waste += g.wastedBytes();
        if (i > 0) {
            EXPECT_GE(set.at(i - 1).wasted, set.at(i).wasted);
        }
    }
    EXPECT_EQ(set.wastedBytes(), waste);
}

TEST(DuplicateFinder, ProgressWhileComparingSaysHowManyOfHowMany) {
    test::TempHome home;
    const QString h = home.path();
    // 150 short files of one length (heads only) and 150 long ones (heads, then whole files).
    for (int i = 0; i < 150; ++i) {
        makeFile(h + QStringLiteral("/short/s%1").arg(i), 4096, static_cast<char>('a' + i % 3));
        makeFile(h + QStringLiteral("/long/l%1").arg(i), 100 * 1024,
                 static_cast<char>('a' + i % 3));
    }
    makeFile(h + "/alone", 7777); // a length no other file has: never compared
    DuplicateFinder::Options o;
    o.root = h;
    o.minimumSize = 1;
    std::vector<std::pair<std::int64_t, std::int64_t>> comparing;
    std::mutex lock;
    const auto groups =
        DuplicateFinder(h).scan(o, [&](const QString& phase, std::int64_t n, std::int64_t total) {
            if (phase == QLatin1String("Comparing files")) {
                const std::lock_guard guard(lock);
                comparing.emplace_back(n, total);
            } else {
                EXPECT_EQ(total, 0) << phase.toStdString(); // the walk's end is not known
            }
        });
    EXPECT_EQ(groups.size(), 6u);
    ASSERT_FALSE(comparing.empty());
    std::int64_t most = 0;
    for (const auto& [n, total] : comparing) {
        EXPECT_GE(total, 300); // the 300 files sharing a length, never the lone one
        EXPECT_LE(n, total);
        most = std::max(most, total);
    }
    // The long files are read twice: first 64 KiB, then whole.
    EXPECT_EQ(most, 450);
    EXPECT_GT(comparing.back().first, 300);
}

TEST(FileDigest, LimitedAndWholeHashesNoticeFilesThatChangedLength) {
    test::TempHome home;
    const QString path = home.path() + "/f.bin";
    makeFile(path, 100'000, 'k');
    const std::string p = path.toStdString();
    const auto head = sha256OfFile(p.c_str(), 65'536, 100'000);
    ASSERT_TRUE(head);
    EXPECT_EQ(head, sha256OfFile(p.c_str(), 65'536));
    EXPECT_EQ(hexDigest(*head).size(), 64);
    // A file shorter than its first 64 KiB is hashed whole either way.
    makeFile(home.path() + "/short.bin", 1000, 'k');
    const std::string s = (home.path() + "/short.bin").toStdString();
    EXPECT_EQ(sha256OfFile(s.c_str(), 65'536, 1000), sha256OfFile(s.c_str()));
    // Shrunk or grown since the walk measured it: not compared.
    EXPECT_FALSE(sha256OfFile(s.c_str(), 65'536, 2000));
    EXPECT_FALSE(sha256OfFile(p.c_str(), -1, 99'999));
    EXPECT_FALSE(sha256OfFile(p.c_str(), -1, 100'001));
    EXPECT_TRUE(sha256OfFile(p.c_str(), -1, 100'000));
    // Vanished.
    EXPECT_FALSE(sha256OfFile((home.path() + "/gone").toStdString().c_str(), 65'536, 10));
}
