// Removal from the command line as a user meets it: the real tarvik, run as an unprivileged user
// (through setpriv when the tests run as root) in a temporary home that the user owns, next to a
// folder outside home that the user may also write to, so only Tarvik's own rules keep it safe.
#include "tests/support/mounted.h"
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <map>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using tarvik::test::Mounted;
using tarvik::test::Outcome;
using tarvik::test::TarvikRun;

namespace {

namespace fs = std::filesystem;

std::string local(const QString& s) {
    return QFile::encodeName(s).toStdString();
}

void writeBytes(const std::string& path, const std::string& contents) {
    fs::create_directories(fs::path(path).parent_path());
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0) << path << ": " << std::strerror(errno);
    ASSERT_EQ(::write(fd, contents.data(), contents.size()), static_cast<ssize_t>(contents.size()));
    ::close(fd);
}

std::string readBytes(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        return "(missing)";
    }
    std::string out;
    char buffer[4096];
    for (ssize_t n; (n = ::read(fd, buffer, sizeof buffer)) > 0;) {
        out.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(fd);
    return out;
}

bool exists(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0;
}

// Every regular file below `root` with its contents, links as their targets.
std::map<std::string, std::string> contentsBelow(const std::string& root) {
    std::map<std::string, std::string> out;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec)) {
        std::error_code e;
        if (it->is_symlink(e)) {
            out[it->path().string()] = "-> " + fs::read_symlink(it->path(), e).string();
        } else if (it->is_regular_file(e)) {
            out[it->path().string()] = readBytes(it->path().string());
        } else {
            out[it->path().string()] = "(folder)";
        }
    }
    return out;
}

// Hands a tree to the user the child runs as.
void giveToUser(const std::string& root) {
    const uid_t uid = TarvikRun::childUid();
    std::error_code ec;
    ::lchown(root.c_str(), uid, uid);
    for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec)) {
        ::lchown(it->path().c_str(), uid, uid);
    }
}

class RemovalCommand : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(tmp_.isValid());
        root_ = local(QDir(tmp_.path()).canonicalPath());
        home_ = root_ + "/home/user";
        outside_ = root_ + "/outside";
        fs::create_directories(home_);
        fs::create_directories(outside_);
        ::chmod(root_.c_str(), 0755);
        ::chmod((root_ + "/home").c_str(), 0755);
        if (!run_.asUnprivilegedUser()) {
            GTEST_SKIP() << "setpriv (util-linux) is needed to run as another user";
        }
    }
    // QTemporaryDir can't remove names that are not UTF-8.
    void TearDown() override {
        std::error_code ec;
        fs::remove_all(root_, ec);
    }
    // Call once the files are in place: the user owns home and the outside folder.
    void handOver() {
        giveToUser(home_);
        giveToUser(outside_);
    }
    Outcome tarvik(const QStringList& args) { return run_(args, QString::fromStdString(home_)); }
    // Runs a shell line whose "$T" is tarvik as the user: for names that are not UTF-8, which
    // only printf can spell as an argument.
    Outcome shell(const QString& line) {
        TarvikRun sh = run_;
        const QString tarvikCommand = (QStringList{run_.program} + run_.prefix).join(' ');
        sh.program = "/bin/sh";
        sh.prefix.clear();
        sh.env["T"] = tarvikCommand;
        sh.workingDirectory = QString::fromStdString(home_);
        return sh({"-c", line}, QString::fromStdString(home_));
    }
    QString h(const std::string& rel) const { return QString::fromStdString(home_ + "/" + rel); }

    QTemporaryDir tmp_;
    std::string root_, home_, outside_;
    TarvikRun run_;
};

} // namespace

TEST_F(RemovalCommand, AFolderSwappedForALinkOutOfHomeWhileCleaningNeverSendsARemovalOutside) {
    // ~/d and ~/dlink (a link to a folder outside home with the same names) trade places
    // thousands of times a second while tarvik clean works through ~/d's files and folders.
    constexpr int kFiles = 1500;
    constexpr int kFolders = 40;
    for (const std::string& base : {home_ + "/d", outside_ + "/precious"}) {
        for (int i = 0; i < kFiles; ++i) {
            writeBytes(base + "/f" + std::to_string(i), base + " file " + std::to_string(i));
        }
        for (int i = 0; i < kFolders; ++i) {
            for (int k = 0; k < 10; ++k) {
                writeBytes(base + "/s" + std::to_string(i) + "/inner/g" + std::to_string(k),
                           base + " inner " + std::to_string(k));
            }
        }
    }
    ASSERT_EQ(::symlink((outside_ + "/precious").c_str(), (home_ + "/dlink").c_str()), 0);
    handOver();
    const auto outsideBefore = contentsBelow(outside_);

    std::atomic<bool> stop{false};
    std::atomic<long> swaps{0};
    std::thread swapper([&] {
        const std::string a = home_ + "/d";
        const std::string b = home_ + "/dlink";
        while (!stop.load(std::memory_order_relaxed)) {
            if (::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0) {
                ++swaps;
            }
        }
    });
    int removedSome = 0;
    for (const char* mode : {"deletePermanently", "moveToTrash", "deletePermanently"}) {
        QStringList args = {"clean", "--yes", "--json", "--mode", mode};
        for (int i = 0; i < kFiles; ++i) {
            args << h("d/f" + std::to_string(i));
        }
        for (int i = 0; i < kFolders; ++i) {
            args << h("d/s" + std::to_string(i));
        }
        const Outcome o = tarvik(args);
        EXPECT_TRUE(o.exitCode == 0 || o.exitCode == 1) << o.err.toStdString();
        const QJsonObject report = QJsonDocument::fromJson(o.out.toUtf8()).object();
        removedSome += report["removed"].toArray().size() > 0 ? 1 : 0;
    }
    stop = true;
    swapper.join();

    EXPECT_GT(swaps.load(), 1000) << "the race did not run";
    EXPECT_GT(removedSome, 0) << "nothing was removed at all, so nothing was tested";
    const auto outsideAfter = contentsBelow(outside_);
    std::size_t changed = 0;
    for (const auto& [path, contents] : outsideBefore) {
        const auto it = outsideAfter.find(path);
        if (it == outsideAfter.end() || it->second != contents) {
            if (++changed <= 10) {
                ADD_FAILURE() << path << " outside home was removed or changed";
            }
        }
    }
    EXPECT_EQ(changed, 0u);
    EXPECT_EQ(outsideAfter.size(), outsideBefore.size());
}

TEST_F(RemovalCommand, MountsBelowHomeAreNeverEnteredBindMountsOfTheSameDiskIncluded) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "mounting needs root; the tests run as root in CI";
    }
    writeBytes(home_ + "/precious/photo.jpg", std::string(300'000, 'p'));
    writeBytes(home_ + "/precious/notes.txt", "keep me");
    writeBytes(home_ + "/.cache/app/blob", std::string(20'000, 'b'));
    fs::create_directories(home_ + "/.cache/app/view");
    fs::create_directories(home_ + "/.cache/other/disk");
    writeBytes(home_ + "/.cache/other/junk", std::string(20'000, 'j'));
    writeBytes(home_ + "/Videos/film.mkv", std::string(2'000'000, 'f'));
    writeBytes(home_ + "/Videos/seen-twice.mkv", "");
    handOver();
    const Mounted bind(home_ + "/precious", home_ + "/.cache/app/view", nullptr, MS_BIND);
    ASSERT_TRUE(bind.ok) << std::strerror(errno);
    const Mounted tmpfs = Mounted::tmpfs(home_ + "/.cache/other/disk", "size=4m");
    ASSERT_TRUE(tmpfs.ok) << std::strerror(errno);
    writeBytes(home_ + "/.cache/other/disk/on-tmpfs", "tmpfs data");
    giveToUser(home_ + "/.cache/other/disk");
    // A bind-mounted file: the same file under a second name that is a mount, not a hard link.
    const Mounted fileBind(home_ + "/Videos/film.mkv", home_ + "/Videos/seen-twice.mkv", nullptr,
                           MS_BIND);
    ASSERT_TRUE(fileBind.ok);

    const Outcome large = tarvik({"large", "--min", "1MB", "--json"});
    ASSERT_EQ(large.exitCode, 0) << large.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(large.out.toUtf8()).array().size(), 1)
        << large.out.toStdString();

    for (const char* mode : {"moveToTrash", "deletePermanently"}) {
        SCOPED_TRACE(mode);
        const Outcome o =
            tarvik({"junk", "clean", "--category", "userCaches", "--yes", "--mode", mode});
        EXPECT_EQ(readBytes(home_ + "/precious/notes.txt"), "keep me");
        EXPECT_EQ(readBytes(home_ + "/precious/photo.jpg"), std::string(300'000, 'p'));
        EXPECT_EQ(readBytes(home_ + "/.cache/other/disk/on-tmpfs"), "tmpfs data");
        EXPECT_EQ(o.exitCode, 1) << o.out.toStdString() << o.err.toStdString();
        if (std::string(mode) == "moveToTrash") {
            // A folder holding a mount point is not moved at all.
            EXPECT_TRUE(o.out.contains("“app” holds a mount point, so it was not moved to the "
                                       "Trash."))
                << o.out.toStdString();
            EXPECT_TRUE(exists(home_ + "/.cache/app/blob"));
        } else {
            // Deleted around the mount points, which are named.
            EXPECT_FALSE(exists(home_ + "/.cache/app/blob"));
            EXPECT_FALSE(exists(home_ + "/.cache/other/junk"));
            EXPECT_TRUE(o.out.contains("Partially cleaned; kept ~/.cache/app/view, which is "
                                       "another file system."))
                << o.out.toStdString();
            EXPECT_TRUE(o.out.contains("~/.cache/other/disk, which is another file system"));
        }
    }
    // Named directly, a file on the bind mount is still refused as crossing it.
    const Outcome named =
        tarvik({"clean", "--yes", "--mode", "deletePermanently", h("Videos/seen-twice.mkv")});
    EXPECT_EQ(named.exitCode, 1);
    EXPECT_TRUE(named.out.contains("is a mount point, and Tarvik never removes across one."))
        << named.out.toStdString();
    EXPECT_EQ(fs::file_size(home_ + "/Videos/film.mkv"), 2'000'000u);
}

TEST_F(RemovalCommand, AHomeOfSlashRemovesNothingAndAHomeThroughALinkCleansNormally) {
    writeBytes(outside_ + "/p.txt", "precious");
    writeBytes(home_ + "/scratch/a.tmp", "scratch");
    handOver();
    TarvikRun slash = run_;
    slash.env["HOME"] = "/";
    slash.env["XDG_CONFIG_HOME"] = QString::fromStdString(home_ + "/.config");
    slash.env["XDG_DATA_HOME"] = QString::fromStdString(home_ + "/.local/share");
    const Outcome o = slash({"clean", "--yes", "--mode", "deletePermanently",
                             QString::fromStdString(outside_ + "/p.txt")},
                            "/");
    EXPECT_EQ(o.exitCode, 1);
    EXPECT_TRUE(o.err.contains("Your home folder is “/”, so Tarvik removes nothing"))
        << o.err.toStdString() << o.out.toStdString();
    EXPECT_EQ(readBytes(outside_ + "/p.txt"), "precious");

    // /home → /var/home, as on some systems: the items are inside the home all the same.
    const std::string linked = root_ + "/home-link";
    ASSERT_EQ(::symlink(home_.c_str(), linked.c_str()), 0);
    const Outcome through = run_({"clean", "--yes", "--mode", "deletePermanently",
                                  QString::fromStdString(linked + "/scratch/a.tmp")},
                                 QString::fromStdString(linked));
    EXPECT_EQ(through.exitCode, 0) << through.out.toStdString() << through.err.toStdString();
    EXPECT_FALSE(exists(home_ + "/scratch/a.tmp"));
}

TEST_F(RemovalCommand, NamesThatAreNotUtf8AreRemovedExactlyAndShownEscaped) {
    // Two names a lossy decoding would make one: a stray byte, and U+FFFD spelled out.
    writeBytes(home_ + "/bad\xff.txt", "raw byte");
    writeBytes(home_ + "/bad\xef\xbf\xbd.txt", "replacement character");
    // A unique file and a copy of the original whose names differ only so.
    writeBytes(home_ + "/Pictures/original.jpg", std::string(5000, 'o'));
    writeBytes(home_ + "/Pictures/copy\xe9.jpg", std::string(5000, 'u')); // unique contents
    writeBytes(home_ + "/Pictures/copy\xef\xbf\xbd.jpg", std::string(5000, 'o'));
    handOver();
    ::utimensat(AT_FDCWD, (home_ + "/Pictures/original.jpg").c_str(),
                std::array<timespec, 2>{timespec{1'000'000, 0}, timespec{1'000'000, 0}}.data(), 0);

    const Outcome clean = shell("$T clean --yes --mode deletePermanently \"$(printf "
                                "'bad\\377.txt')\"");
    EXPECT_EQ(clean.exitCode, 0) << clean.out.toStdString() << clean.err.toStdString();
    EXPECT_FALSE(exists(home_ + "/bad\xff.txt"));
    EXPECT_EQ(readBytes(home_ + "/bad\xef\xbf\xbd.txt"), "replacement character");
    const Outcome refused = shell("$T clean --yes \"$(printf '/etc/x\\377')\"");
    EXPECT_TRUE(refused.out.contains("/etc/x\\xFF is outside")) << refused.out.toStdString();

    const Outcome list = tarvik({"dupes", "--min", "1000", "--json"});
    const QJsonArray groups = QJsonDocument::fromJson(list.out.toUtf8()).array();
    ASSERT_EQ(groups.size(), 1) << list.out.toStdString();
    EXPECT_EQ(groups[0].toObject()["files"].toArray().size(), 2);
    // Raw bytes travel in JSON as the lone surrogates that hold them, as Python reads them.
    const Outcome text = tarvik({"dupes", "--min", "1000"});
    EXPECT_FALSE(text.out.contains("copy\\xE9.jpg")) << "the unique file is no copy";

    const Outcome removed =
        tarvik({"dupes", "--min", "1000", "--delete", "--yes", "--mode", "deletePermanently"});
    EXPECT_EQ(removed.exitCode, 0) << removed.out.toStdString() << removed.err.toStdString();
    EXPECT_EQ(readBytes(home_ + "/Pictures/copy\xe9.jpg"), std::string(5000, 'u'));
    EXPECT_FALSE(exists(home_ + "/Pictures/copy\xef\xbf\xbd.jpg"));
    EXPECT_TRUE(exists(home_ + "/Pictures/original.jpg"));

    writeBytes(home_ + "/Pictures/other\xfe.jpg", std::string(5000, 'u'));
    giveToUser(home_ + "/Pictures");
    const Outcome escaped = tarvik({"dupes", "--min", "1000"});
    EXPECT_TRUE(escaped.out.contains("other\\xFE.jpg")) << escaped.out.toStdString();
    const Outcome json = tarvik({"dupes", "--min", "1000", "--json"});
    EXPECT_TRUE(json.out.contains("other\\udcfe.jpg")) << json.out.toStdString();
}

TEST_F(RemovalCommand, ExcludedPlacesAreNeverRemovedAndAnUnreadableListStopsEveryRemoval) {
    writeBytes(home_ + "/.cache/app/blob", std::string(20'000, 'b'));
    writeBytes(home_ + "/.cache/app/keep/precious", "excluded inside an offered cache");
    writeBytes(home_ + "/real/keep/copy.iso", std::string(70'000, 'c'));
    writeBytes(home_ + "/Downloads/copy.iso", std::string(70'000, 'c'));
    writeBytes(home_ + "/Music/song.flac", std::string(70'000, 's'));
    writeBytes(home_ + "/Music/song copy.flac", std::string(70'000, 's'));
    ASSERT_EQ(::symlink("real", (home_ + "/lnk").c_str()), 0);
    handOver();
    ASSERT_EQ(tarvik({"exclusions", "add", "~/.cache/app/keep"}).exitCode, 0);
    // Spelled through a link: the walk finds the folder by its real name.
    ASSERT_EQ(tarvik({"exclusions", "add", "~/lnk/keep"}).exitCode, 0);
    ASSERT_EQ(tarvik({"exclusions", "add", "~/Music"}).exitCode, 0);

    // Moving to the Trash takes a folder whole: one that holds an exclusion stays.
    const Outcome trashed =
        tarvik({"junk", "clean", "--category", "userCaches", "--yes", "--mode", "moveToTrash"});
    EXPECT_EQ(trashed.exitCode, 1);
    EXPECT_TRUE(trashed.out.contains("“app” holds ~/.cache/app/keep, which you excluded, so it "
                                     "was not moved to the Trash."))
        << trashed.out.toStdString();
    EXPECT_TRUE(exists(home_ + "/.cache/app/blob"));
    // Deleting goes around it.
    const Outcome deleted = tarvik(
        {"junk", "clean", "--category", "userCaches", "--yes", "--mode", "deletePermanently"});
    EXPECT_FALSE(exists(home_ + "/.cache/app/blob"));
    EXPECT_EQ(readBytes(home_ + "/.cache/app/keep/precious"), "excluded inside an offered cache");
    EXPECT_TRUE(deleted.out.contains("kept ~/.cache/app/keep, which you excluded"))
        << deleted.out.toStdString();

    // A relative root is the same folder as its absolute spelling: exclusions and skipped
    // folders still hold.
    TarvikRun inHome = run_;
    inHome.workingDirectory = QString::fromStdString(home_);
    const Outcome dupes =
        inHome({"dupes", ".", "--min", "1000", "--delete", "--yes", "--mode", "deletePermanently"},
               QString::fromStdString(home_));
    EXPECT_EQ(dupes.exitCode, 0) << dupes.out.toStdString() << dupes.err.toStdString();
    EXPECT_TRUE(exists(home_ + "/real/keep/copy.iso"));
    EXPECT_TRUE(exists(home_ + "/Downloads/copy.iso")) << "its only copy is excluded";
    EXPECT_TRUE(exists(home_ + "/Music/song copy.flac"));
    EXPECT_TRUE(exists(home_ + "/.cache/app/keep/precious"));

    // A settings file that can't be read means the exclusions are unknown: nothing goes.
    writeBytes(home_ + "/scratch.tmp", "scratch");
    giveToUser(home_);
    const std::string conf = home_ + "/.config/Tarvik/Tarvik.conf";
    ASSERT_TRUE(exists(conf));
    ASSERT_EQ(::chmod(conf.c_str(), 0), 0);
    for (const QStringList& args :
         {QStringList{"clean", "--yes", h("scratch.tmp")},
          QStringList{"junk", "clean", "--category", "userCaches", "--yes"},
          QStringList{"dupes", "--min", "1000", "--delete", "--yes"}}) {
        const Outcome o = tarvik(args);
        EXPECT_EQ(o.exitCode, 1) << args.join(' ').toStdString();
        EXPECT_TRUE(o.err.contains("Tarvik couldn't read your exclusion list in "
                                   "~/.config/Tarvik/Tarvik.conf"))
            << o.err.toStdString();
        EXPECT_TRUE(o.err.contains("so it removes nothing until it can.")) << o.err.toStdString();
    }
    EXPECT_TRUE(exists(home_ + "/scratch.tmp"));
    ::chmod(conf.c_str(), 0600);
}

TEST_F(RemovalCommand, EmptyDotAndDotDotAreRefusedAndDotDotAfterALinkIsNotGuessed) {
    writeBytes(home_ + "/d/f.txt", "in d");
    writeBytes(home_ + "/p.txt", "home's p");
    writeBytes(outside_ + "/precious/p.txt", "precious p");
    fs::create_directories(outside_ + "/precious/sub");
    ASSERT_EQ(::symlink((outside_ + "/precious/sub").c_str(), (home_ + "/lnk").c_str()), 0);
    handOver();
    TarvikRun inD = run_;
    inD.workingDirectory = QString::fromStdString(home_ + "/d");
    const Outcome o = inD(
        {"clean", "--yes", "--mode", "deletePermanently", "", ".", "..", "./", h("d/."), h("d/..")},
        QString::fromStdString(home_));
    EXPECT_EQ(o.exitCode, 1);
    EXPECT_EQ(readBytes(home_ + "/d/f.txt"), "in d");
    EXPECT_EQ(readBytes(home_ + "/p.txt"), "home's p");
    EXPECT_TRUE(o.out.contains("An empty path names nothing and was skipped."));
    EXPECT_EQ(o.out.count("ends in “.” or “..” and was skipped"), 5) << o.out.toStdString();

    const Outcome up = tarvik({"clean", "--yes", "--mode", "deletePermanently", h("lnk/../p.txt")});
    EXPECT_EQ(up.exitCode, 1);
    EXPECT_TRUE(up.out.contains("goes up with “..” from a symbolic link")) << up.out.toStdString();
    EXPECT_EQ(readBytes(home_ + "/p.txt"), "home's p");
    EXPECT_EQ(readBytes(outside_ + "/precious/p.txt"), "precious p");
}

TEST_F(RemovalCommand, TheReportWordsTrashedAndDeletedItemsEachAsTheyWentAndRecordsOnlyTheFreed) {
    writeBytes(home_ + "/.cache/app/blob", std::string(20'000, 'b'));
    writeBytes(home_ + "/.local/share/Trash/files/old.txt", std::string(9'000, 'o'));
    writeBytes(home_ + "/.local/share/Trash/info/old.txt.trashinfo",
               "[Trash Info]\nPath=/x/old.txt\nDeletionDate=2024-01-01T00:00:00\n");
    handOver();
    const Outcome o = tarvik({"junk", "clean", "--category", "userCaches", "--category", "trash",
                              "--yes", "--mode", "moveToTrash"});
    EXPECT_EQ(o.exitCode, 0) << o.out.toStdString() << o.err.toStdString();
    // The Trash's own contents are always deleted; the cache went to the Trash.
    const QStringList sentences = o.out.trimmed().split(". ");
    ASSERT_EQ(sentences.size(), 2) << o.out.toStdString();
    EXPECT_TRUE(sentences[0].startsWith("Moved 1 item (")) << o.out.toStdString();
    EXPECT_TRUE(sentences[0].endsWith(") to the Trash"));
    EXPECT_TRUE(sentences[1].startsWith("Deleted 1 item, ")) << o.out.toStdString();
    EXPECT_TRUE(sentences[1].endsWith(" freed."));
    EXPECT_TRUE(exists(home_ + "/.local/share/Trash/files/app"));
    EXPECT_FALSE(exists(home_ + "/.local/share/Trash/files/old.txt"));
    const std::string timeline = home_ + "/.local/share/Tarvik/free-space-timeline.json";
    auto recorded = [&] {
        return QJsonDocument::fromJson(QByteArray::fromStdString(readBytes(timeline)))["cleanups"]
            .toArray();
    };
    ASSERT_EQ(recorded().size(), 1);
    EXPECT_EQ(recorded()[0].toObject()["itemCount"].toInt(), 1); // the deleted one only

    // One item to the Trash: moved, and nothing said or recorded as freed.
    writeBytes(home_ + "/a.tmp", std::string(8'192, 'a'));
    writeBytes(home_ + "/b.tmp", "b");
    giveToUser(home_);
    const Outcome text = tarvik({"clean", "--yes", "--mode", "moveToTrash", h("a.tmp")});
    EXPECT_EQ(text.exitCode, 0) << text.err.toStdString();
    EXPECT_EQ(text.out, "Moved 1 item (8.2 KB) to the Trash.\n");
    EXPECT_TRUE(exists(home_ + "/.local/share/Trash/files/a.tmp"));
    EXPECT_EQ(recorded().size(), 1);

    const Outcome json = tarvik({"clean", "--yes", "--json", "--mode", "moveToTrash", h("b.tmp")});
    const QJsonObject report = QJsonDocument::fromJson(json.out.toUtf8()).object();
    ASSERT_EQ(report["removed"].toArray().size(), 1) << json.out.toStdString();
    EXPECT_EQ(report["removed"][0]["mode"].toString(), "moveToTrash");
    EXPECT_GT(report["trashedBytes"].toDouble(), 0);
    EXPECT_EQ(report["freedBytes"].toDouble(), 0); // still on the disk, in the Trash
    EXPECT_EQ(recorded().size(), 1);
}

TEST_F(RemovalCommand, AMissingOrNonFolderRootIsAnErrorNotAnEmptyResult) {
    writeBytes(home_ + "/file.txt", "a file");
    handOver();
    for (const char* command : {"large", "dupes"}) {
        const Outcome missing = tarvik({command, h("Mispelled")});
        EXPECT_EQ(missing.exitCode, 2) << command;
        EXPECT_EQ(missing.err, "tarvik: There is no folder ~/Mispelled.\n") << command;
        EXPECT_TRUE(missing.out.isEmpty()) << missing.out.toStdString();
        const Outcome file = tarvik({command, h("file.txt")});
        EXPECT_EQ(file.exitCode, 2) << command;
        EXPECT_EQ(file.err, "tarvik: ~/file.txt is not a folder.\n") << command;
    }
}

TEST_F(RemovalCommand, StoppingAMoveToTheTrashHalfWayLeavesNoEmptyDescription) {
    constexpr int kFiles = 2000;
    for (int i = 0; i < kFiles; ++i) {
        writeBytes(home_ + "/many/f" + std::to_string(i), "file " + std::to_string(i));
    }
    handOver();
    QStringList args = {"clean", "--yes", "--mode", "moveToTrash"};
    for (int i = 0; i < kFiles; ++i) {
        args << h("many/f" + std::to_string(i));
    }
    // SIGTERM at several moments of the run, each time into what is left.
    int stopped = 0;
    for (int delay : {150, 300, 450, 600, 900}) {
        QProcess p;
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        e.insert("HOME", h(""));
        e.insert("XDG_CONFIG_HOME", h(".config"));
        e.insert("XDG_DATA_HOME", h(".local/share"));
        p.setProcessEnvironment(e);
        p.setStandardInputFile(QProcess::nullDevice());
        p.start(run_.program, run_.prefix + args);
        ASSERT_TRUE(p.waitForStarted());
        if (!p.waitForFinished(delay)) {
            ::kill(static_cast<pid_t>(p.processId()), SIGTERM);
            ++stopped;
        }
        p.waitForFinished(30000);
    }
    EXPECT_GT(stopped, 0) << "every run ended before it could be stopped";
    const std::string info = home_ + "/.local/share/Trash/info";
    int descriptions = 0;
    for (const auto& entry : fs::directory_iterator(info)) {
        const std::string name = entry.path().filename().string();
        ASSERT_TRUE(name.ends_with(".trashinfo")) << name << " is left over";
        const std::string text = readBytes(entry.path().string());
        EXPECT_TRUE(text.starts_with("[Trash Info]\nPath=") &&
                    text.find("\nDeletionDate=") != std::string::npos && text.ends_with("\n"))
            << name << " holds \"" << text << "\"";
        ++descriptions;
    }
    EXPECT_GT(descriptions, 0);
    // Every file is in one place or the other, never lost.
    int present = 0;
    for (int i = 0; i < kFiles; ++i) {
        const std::string n = "f" + std::to_string(i);
        present += exists(home_ + "/many/" + n) || exists(home_ + "/.local/share/Trash/files/" + n);
    }
    EXPECT_EQ(present, kFiles);
}
