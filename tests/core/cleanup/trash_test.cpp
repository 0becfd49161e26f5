#include "core/cleanup/cleaner.h"
#include "core/sys/file_names.h"
#include "tests/support/mounted.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrl>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tarvik;

namespace {

struct TrashHome {
    QTemporaryDir dir;
    QString home = QDir(dir.path()).canonicalPath();
    QString trash = home + "/.local/share/Trash";

    void write(const QString& rel, const QByteArray& data) const {
        QDir().mkpath((home + "/" + rel).section('/', 0, -2));
        QFile f(home + "/" + rel);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(data);
    }
    CleanReport trashItems(const QStringList& rels) const {
        std::vector<CleanableItem> items;
        for (const auto& r : rels) {
            items.push_back({home + "/" + r, 0, {}, {}});
        }
        return Cleaner(SafetyGuard(home, {}), Trash(trash)).remove(items, RemovalMode::MoveToTrash);
    }
    // Runs a Trash tool as the user of this home would.
    QString run(const QString& program, const QStringList& args,
                const QByteArray& input = {}) const {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home);
        env.insert("XDG_DATA_HOME", home + "/.local/share");
        p.setProcessEnvironment(env);
        p.start(program, args);
        p.write(input);
        p.closeWriteChannel();
        p.waitForFinished(30000);
        return QString::fromUtf8(p.readAllStandardOutput());
    }
};

QString readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

} // namespace

TEST(Trash, ItemsGoToTheHomeTrashWithTheirDescription) {
    TrashHome t;
    t.write("docs/report final.txt", "one");
    t.write("docs/sub/x.bin", "two");
    t.write("other/report final.txt", "three");
    const CleanReport r =
        t.trashItems({"docs/report final.txt", "docs/sub", "other/report final.txt"});
    EXPECT_TRUE(r.failures.empty()) << r.failures[0].message.toStdString();
    EXPECT_EQ(readAll(t.trash + "/files/report final.txt"), "one");
    EXPECT_EQ(readAll(t.trash + "/files/sub/x.bin"), "two");
    // The same name twice: the second gets a name of its own, and neither is lost.
    EXPECT_EQ(readAll(t.trash + "/files/report final.txt.2"), "three");
    const QString info = readAll(t.trash + "/info/report final.txt.trashinfo");
    EXPECT_TRUE(info.startsWith(
        "[Trash Info]\nPath=" + QString::fromUtf8(QUrl::toPercentEncoding(t.home, "/")) +
        "/docs/report%20final.txt\nDeletionDate="))
        << info.toStdString();
    EXPECT_TRUE(QRegularExpression("DeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n$")
                    .match(info)
                    .hasMatch());
    EXPECT_EQ(Trash::trashInfo("/a/ü ?#%.txt", "2026-01-02T03:04:05"),
              "[Trash Info]\nPath=/a/%C3%BC%20%3F%23%25.txt\nDeletionDate=2026-01-02T03:04:05\n");
}

TEST(Trash, TrashCliListsAndRestoresWhatTarvikTrashed) {
    const QString list = QStandardPaths::findExecutable("trash-list");
    const QString restore = QStandardPaths::findExecutable("trash-restore");
    if (list.isEmpty() || restore.isEmpty()) {
        GTEST_SKIP() << "trash-cli is not installed";
    }
    TrashHome t;
    t.write("notes/ünïcode plan.md", "plan");
    ASSERT_TRUE(t.trashItems({"notes/ünïcode plan.md"}).failures.empty());
    EXPECT_TRUE(t.run(list, {}).contains(t.home + "/notes/ünïcode plan.md"));
    t.run(restore, {t.home + "/notes"}, "0\n");
    EXPECT_EQ(readAll(t.home + "/notes/ünïcode plan.md"), "plan");
    EXPECT_FALSE(QFile::exists(t.trash + "/info/ünïcode plan.md.trashinfo"));
}

TEST(Trash, GioListsAndRestoresWhatTarvikTrashed) {
    const QString gio = QStandardPaths::findExecutable("gio");
    const QString session = QStandardPaths::findExecutable("dbus-run-session");
    if (gio.isEmpty() || session.isEmpty()) {
        GTEST_SKIP() << "gio or dbus-run-session is not installed";
    }
    TrashHome t;
    t.write("photos/holiday 1.jpg", "jpeg");
    ASSERT_TRUE(t.trashItems({"photos/holiday 1.jpg"}).failures.empty());
    const QString listed = t.run(session, {"--", gio, "trash", "--list"});
    EXPECT_TRUE(listed.contains("trash:///holiday%201.jpg\t" + t.home + "/photos/holiday 1.jpg"))
        << listed.toStdString();
    t.run(session, {"--", gio, "trash", "--restore", "trash:///holiday%201.jpg"});
    EXPECT_EQ(readAll(t.home + "/photos/holiday 1.jpg"), "jpeg");
}

TEST(Trash, ANameThatIsNotUtf8IsDescribedByItsOwnBytes) {
    TrashHome t;
    const std::string raw = QFile::encodeName(t.home).toStdString() + "/bad\xff name.txt";
    QDir().mkpath(t.home);
    ASSERT_EQ(::close(::open(raw.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)), 0);
    const CleanReport r =
        Cleaner(SafetyGuard(t.home, {}), Trash(t.trash))
            .remove({{fileName::decode(raw), 0, {}, {}}}, RemovalMode::MoveToTrash);
    ASSERT_TRUE(r.failures.empty()) << r.failures[0].message.toStdString();
    const std::string info =
        QFile::encodeName(t.trash).toStdString() + "/info/bad\xff name.txt.trashinfo";
    const int fd = ::open(info.c_str(), O_RDONLY);
    ASSERT_GE(fd, 0);
    char buffer[512] = {};
    ASSERT_GT(::read(fd, buffer, sizeof buffer - 1), 0);
    ::close(fd);
    EXPECT_TRUE(QByteArray(buffer).contains("/bad%FF%20name.txt\n")) << buffer;
    std::error_code ec; // QTemporaryDir can't remove names that are not UTF-8
    std::filesystem::remove_all(QFile::encodeName(t.trash).toStdString(), ec);
}

TEST(Trash, ATrashFolderOfSomeoneElseIsNeverUsedAndAFullDiskSaysSo) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "mounting needs root; the tests run as root in CI";
    }
    TrashHome t;
    const QString disk = t.home + "/disk";
    QDir().mkpath(disk);
    const std::string diskPath = QFile::encodeName(disk).toStdString();
    std::optional<test::Mounted> mounted(test::Mounted::tmpfs(diskPath, "size=256k"));
    ASSERT_TRUE(mounted->ok);
    // Another user's ".Trash-<our uid>", open to all: taking it would hand them our files.
    const QString theirs = disk + "/.Trash-" + QString::number(::getuid());
    QDir().mkpath(theirs + "/files");
    ASSERT_EQ(::chown(QFile::encodeName(theirs).constData(), 12345, 12345), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(theirs).constData(), 0777), 0);
    t.write("disk/photo.jpg", "jpeg");
    const Cleaner cleaner = Cleaner(SafetyGuard(t.home, {}), Trash(t.trash)).startingAlsoAt(disk);
    CleanReport r = cleaner.remove({{disk + "/photo.jpg", 0, {}, {}}}, RemovalMode::MoveToTrash);
    ASSERT_EQ(r.failures.size(), 1u);
    EXPECT_EQ(r.failures[0].message, "“photo.jpg” couldn't be moved to the Trash: there is no "
                                     "usable Trash on the disk that holds it.");
    EXPECT_EQ(readAll(disk + "/photo.jpg"), "jpeg");
    EXPECT_TRUE(QDir(theirs + "/files").isEmpty());

    // Our own trash on that disk, and the disk full: the reason is the full disk.
    mounted.reset();
    const test::Mounted full = test::Mounted::tmpfs(diskPath, "size=64k");
    ASSERT_TRUE(full.ok);
    t.write("disk/photo.jpg", "jpeg");
    QDir().mkpath(disk + "/.Trash-" + QString::number(::getuid()) + "/files");
    QDir().mkpath(disk + "/.Trash-" + QString::number(::getuid()) + "/info");
    {
        QFile filler(disk + "/filler");
        ASSERT_TRUE(filler.open(QIODevice::WriteOnly));
        const QByteArray block(4096, 'f');
        while (filler.write(block) == block.size() && filler.flush()) {
        }
    }
    r = cleaner.remove({{disk + "/photo.jpg", 0, {}, {}}}, RemovalMode::MoveToTrash);
    ASSERT_EQ(r.failures.size(), 1u);
    EXPECT_EQ(r.failures[0].message,
              "“photo.jpg” couldn't be moved to the Trash: No space left on device.");
    EXPECT_EQ(readAll(disk + "/photo.jpg"), "jpeg");
    EXPECT_TRUE(QDir(disk + "/.Trash-" + QString::number(::getuid()) + "/info").isEmpty())
        << "no empty description is left behind";
}
