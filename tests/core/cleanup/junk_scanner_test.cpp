#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/junk_scanner.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

struct JunkHome {
    QTemporaryDir dir;
    QString home = QDir(dir.path()).canonicalPath();
    void write(const QString& rel, qint64 bytes = 5000) const {
        QDir().mkpath((home + "/" + rel).section('/', 0, -2));
        QFile f(home + "/" + rel);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(bytes, 'j'));
    }
    std::vector<JunkScanResult> scan(std::optional<ExclusionList> exclusions = {}) const {
        JunkScanner::Options o;
        o.home = home;
        o.exclusions = std::move(exclusions);
        return JunkScanner(o).scan({kAllJunkCategories.begin(), kAllJunkCategories.end()});
    }
};

QStringList names(const JunkScanResult& r, const QString& home) {
    QStringList out;
    for (const auto& item : r.items) {
        out << item.path.mid(home.size() + 1);
    }
    return out;
}

const JunkScanResult& of(const std::vector<JunkScanResult>& all, JunkCategory c) {
    return all[static_cast<std::size_t>(c)];
}

} // namespace

TEST(JunkCategory, ElevenCategoriesWithTheirDefaultsAndKeys) {
    ASSERT_EQ(kAllJunkCategories.size(), 11u);
    int selected = 0;
    for (auto c : kAllJunkCategories) {
        EXPECT_EQ(junkCategoryFromRaw(info(c).rawValue), c);
        selected += info(c).selectedByDefault ? 1 : 0;
    }
    EXPECT_EQ(selected, 7);
    EXPECT_FALSE(info(JunkCategory::DeviceSupport).selectedByDefault);
    EXPECT_FALSE(info(JunkCategory::OldInstallers).selectedByDefault);
    EXPECT_TRUE(info(JunkCategory::Trash).selectedByDefault);
    EXPECT_EQ(info(JunkCategory::UserCaches).title, "User Cache Files");
    EXPECT_TRUE(alwaysDeletesPermanently(JunkCategory::Trash));
    EXPECT_FALSE(alwaysDeletesPermanently(JunkCategory::UserCaches));
    EXPECT_FALSE(junkCategoryFromRaw("caches"));
}

TEST(JunkScanner, EachLocationIsOfferedOnceInItsOwnCategory) {
    JunkHome h;
    h.write("Library/Caches/com.example.app/db", 9000);
    h.write("Library/Caches/Homebrew/downloads/x.tar.gz");
    h.write("Library/Caches/org.pellor.tarvik/own");
    h.write("Library/Caches/.DS_Store");
    h.write("Library/Logs/app.log");
    h.write("Library/Logs/DiagnosticReports/crash.ips");
    h.write(".cache/thumbnails/large/t.png", 20000);
    h.write(".cache/pip/http/a");
    h.write(".cache/yarn/v6/b");
    h.write(".cache/huggingface/hub/model");
    h.write(".npm/_cacache/index");
    h.write("Downloads/tool.ISO");
    h.write("Downloads/setup.iso");
    h.write("Downloads/app.deb");
    h.write("Downloads/archive.zip");
    h.write("Downloads/.hidden.iso");
    QDir().mkpath(h.home + "/Downloads/folder.dmg");
    QDir().mkpath(h.home + "/Library/Caches/empty-cache");
    h.write(".local/share/Trash/files/old.txt");
    h.write(".local/share/xorg/Xorg.0.log");
    const auto all = h.scan();
    ASSERT_EQ(all.size(), 11u);

    const auto caches = names(of(all, JunkCategory::UserCaches), h.home);
    EXPECT_EQ(caches, (QStringList{".cache/thumbnails", "Library/Caches/com.example.app"}));
    const auto packages = names(of(all, JunkCategory::PackageManagerCaches), h.home);
    EXPECT_TRUE(packages.contains("Library/Caches/Homebrew"));
    EXPECT_TRUE(packages.contains(".cache/pip"));
    EXPECT_TRUE(packages.contains(".cache/yarn"));
    EXPECT_TRUE(packages.contains(".cache/huggingface/hub"));
    EXPECT_TRUE(packages.contains(".npm/_cacache"));
    EXPECT_EQ(names(of(all, JunkCategory::UserLogs), h.home),
              (QStringList{"Library/Logs/app.log", ".local/share/xorg/Xorg.0.log"}));
    EXPECT_EQ(names(of(all, JunkCategory::CrashReports), h.home),
              QStringList{"Library/Logs/DiagnosticReports/crash.ips"});
    auto installers = names(of(all, JunkCategory::OldInstallers), h.home);
    installers.sort();
    EXPECT_EQ(installers,
              (QStringList{"Downloads/app.deb", "Downloads/setup.iso", "Downloads/tool.ISO"}));
    EXPECT_EQ(names(of(all, JunkCategory::Trash), h.home),
              QStringList{".local/share/Trash/files/old.txt"});
    EXPECT_TRUE(of(all, JunkCategory::XcodeDerivedData).items.empty());

    // Totals add up; the largest item comes first.
    const auto& c = of(all, JunkCategory::UserCaches);
    EXPECT_EQ(c.totalSize, c.items[0].size + c.items[1].size);
    EXPECT_GE(c.items[0].size, c.items[1].size);
    EXPECT_TRUE(c.items[0].modified.has_value());
}

TEST(JunkScanner, ExcludedLocationsAndLinksOutOfHomeAreNeverOffered) {
    JunkHome h;
    h.write("Library/Caches/keep-me/a");
    h.write("Library/Caches/drop-me/a");
    QTemporaryDir elsewhere;
    QDir().mkpath(elsewhere.path() + "/cache");
    QFile big(elsewhere.path() + "/cache/big");
    ASSERT_TRUE(big.open(QIODevice::WriteOnly));
    big.write(QByteArray(100000, 'b'));
    big.close();
    // ~/.cache itself is a link elsewhere: it is not followed out of home.
    ASSERT_TRUE(QFile::link(elsewhere.path() + "/cache", h.home + "/.cache"));
    const auto all = h.scan(ExclusionList({"~/Library/Caches/keep-me"}, h.home));
    EXPECT_EQ(names(of(all, JunkCategory::UserCaches), h.home),
              QStringList{"Library/Caches/drop-me"});
}

TEST(JunkScanner, TrashIsAlwaysDeletedForGoodAndTheRestUsesTheChosenMode) {
    JunkHome h;
    h.write("Library/Caches/app/a");
    h.write(".local/share/Trash/files/old.txt");
    h.write(".local/share/Trash/info/old.txt.trashinfo");
    const auto all = h.scan();
    const auto groups = junkCleanupGroups(all, RemovalMode::MoveToTrash);
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].mode, RemovalMode::DeletePermanently);
    EXPECT_EQ(groups[0].items.size(), 1u);
    EXPECT_EQ(groups[1].mode, RemovalMode::MoveToTrash);

    const Cleaner cleaner(SafetyGuard(h.home, {}), Trash(h.home + "/.local/share/Trash"));
    const CleanReport r = runCleanup(cleaner, groups, "System Junk", {}, nullptr, nullptr);
    EXPECT_TRUE(r.failures.empty());
    // The trashed cache sits in the Trash now; the old Trash entry is gone with its description.
    EXPECT_TRUE(QFile::exists(h.home + "/.local/share/Trash/files/app"));
    EXPECT_FALSE(QFile::exists(h.home + "/.local/share/Trash/files/old.txt"));
    EXPECT_FALSE(QFile::exists(h.home + "/.local/share/Trash/info/old.txt.trashinfo"));
}

TEST(JunkScanner, LinksAndEmptyFilesInTheTrashAreOfferedSoTheyCanEverGo) {
    JunkHome h;
    h.write(".local/share/Trash/files/empty.txt", 0);
    QDir().mkpath(h.home + "/.local/share/Trash/files");
    ASSERT_TRUE(QFile::link("/nowhere", h.home + "/.local/share/Trash/files/dangling"));
    ASSERT_TRUE(QFile::link(h.home + "/Documents", h.home + "/.local/share/Trash/files/docs"));
    h.write("Library/Caches/empty/nothing", 0);
    const auto all = h.scan();
    QStringList trash = names(of(all, JunkCategory::Trash), h.home);
    trash.sort();
    EXPECT_EQ(trash,
              (QStringList{".local/share/Trash/files/dangling", ".local/share/Trash/files/docs",
                           ".local/share/Trash/files/empty.txt"}));
    // Elsewhere an empty folder is nothing worth offering.
    EXPECT_TRUE(of(all, JunkCategory::UserCaches).items.empty());
}

TEST(JunkScanner, AnExcludedFolderInsideAnOfferedCacheIsNotCountedAndIsNamed) {
    JunkHome h;
    h.write(".cache/app/blob", 20'000);
    h.write(".cache/app/keep/precious", 500'000);
    const auto all = h.scan(ExclusionList({"~/.cache/app/keep"}, h.home));
    const auto& caches = of(all, JunkCategory::UserCaches);
    ASSERT_EQ(caches.items.size(), 1u);
    EXPECT_LT(caches.items[0].size, 100'000) << "the excluded folder's size is not offered";
    EXPECT_EQ(caches.items[0].detail, QString("Keeps ~/.cache/app/keep, which you excluded."));
}

TEST(JunkScanner, TheTrashIsFoundWhereXdgDataHomePutsItAndNowhereElse) {
    test::TempHome home;
    const QString h = QDir(home.path()).canonicalPath();
    ::setenv("HOME", QFile::encodeName(h).constData(), 1);
    ::setenv("XDG_DATA_HOME", QFile::encodeName(h + "/data").constData(), 1);
    QDir().mkpath(h + "/data/Trash/files/real");
    QDir().mkpath(h + "/.local/share/Trash/files/not-the-trash");
    Preferences prefs;
    JunkScanner::Options o = CapabilitySettings::junkScanner(prefs);
    EXPECT_EQ(o.trashFiles, "data/Trash/files");
    const auto all = JunkScanner(o).scan({JunkCategory::Trash});
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(names(all[0], h), QStringList{"data/Trash/files/real"});
}
