#include "core/cleanup/exclusion_list.h"
#include "core/cleanup/path_display.h"
#include "core/cleanup/safety_guard.h"
#include "core/platform/xdg_user_dirs.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

struct Home {
    QTemporaryDir dir;
    QString home;
    Home() : home(QDir(dir.path()).canonicalPath() + "/home/user") {
        for (const char* d : {"Library/Caches/com.example.app", "Documents", ".ssh/keys", "Movies",
                              "Dokumente", "a"}) {
            QDir().mkpath(home + "/" + d);
        }
        QDir().mkpath(dir.path() + "/outside");
    }
    SafetyGuard guard(QStringList userDirs = {}) const {
        return SafetyGuard(home, {"/Applications"}, userDirs);
    }
    QString refusal(const SafetyGuard& g, const QString& path) const {
        const auto v = g.check(path);
        return v ? v->description() : QStringLiteral("accepted");
    }
};

} // namespace

TEST(SafetyGuard, RefusesProtectedLocationsTheirAncestorsAndForbiddenSubtrees) {
    Home h;
    const SafetyGuard g = h.guard();
    for (const QString& p :
         {h.home, h.home + "/Library", h.home + "/Documents", h.home + "/.cache",
          h.home + "/.local/share/Trash", h.home + "/.config", QStringLiteral("/Applications"),
          QStringLiteral("/"), QStringLiteral("/home"), QStringLiteral("/proc"),
          h.home.section('/', 0, -2) /* the folder above home */}) {
        EXPECT_EQ(h.refusal(g, p),
                  SafetyGuard::canonical(p) + " is a protected location and was skipped.")
            << p.toStdString();
    }
    for (const QString& p :
         {h.home + "/.ssh/keys/id_ed25519", h.home + "/.ssh",
          h.home + "/Library/Keychains/login.keychain-db", h.home + "/Library/Mobile Documents/x",
          h.home + "/.gnupg/a/b/c", h.home + "/.local/share/keyrings/login.keyring",
          h.home + "/.pki/nssdb", QStringLiteral("/usr/lib/x/y"), QStringLiteral("/sys/kernel"),
          QStringLiteral("/boot/vmlinuz")}) {
        const auto v = g.check(p);
        ASSERT_TRUE(v) << p.toStdString();
        EXPECT_EQ(v->kind, Violation::Kind::ProtectedPath) << p.toStdString();
    }
    // ".." is resolved before judging: ~/Library/../Documents is ~/Documents.
    EXPECT_EQ(g.check(h.home + "/Library/../Documents")->path, h.home + "/Documents");
}

TEST(SafetyGuard, AcceptsOnlyWhatLiesStrictlyInsideTheAllowedRoots) {
    Home h;
    const SafetyGuard g = h.guard();
    EXPECT_TRUE(g.isAllowed(h.home + "/Library/Caches/com.example.app"));
    EXPECT_TRUE(g.isAllowed(h.home + "/Movies/old.mov"));
    EXPECT_TRUE(g.isAllowed("/Applications/Foo.app"));
    EXPECT_TRUE(g.isAllowed(h.home + "/not/yet/there")); // missing items still get a canonical path
    EXPECT_EQ(h.refusal(g, "/tmp/x"),
              "/tmp/x is outside the locations Tarvik is allowed to clean.");
    EXPECT_EQ(g.check(h.dir.path() + "/outside/x")->kind, Violation::Kind::OutsideAllowedRoots);
    EXPECT_EQ(g.check(h.home + "/a/../../../outside")->kind, Violation::Kind::OutsideAllowedRoots);
    // A second root equal to the path is not "inside" it.
    const SafetyGuard extra(h.home, {h.dir.path() + "/outside"});
    EXPECT_EQ(extra.check(h.dir.path() + "/outside")->kind, Violation::Kind::OutsideAllowedRoots);
    EXPECT_TRUE(extra.isAllowed(h.dir.path() + "/outside/x"));
    EXPECT_THROW(g.validate("/tmp/x"), Violation);
    EXPECT_NO_THROW(g.validate(h.home + "/Movies/old.mov"));
}

TEST(SafetyGuard, ALinkIsJudgedAsItselfButLinksAboveItAreFollowed) {
    Home h;
    const SafetyGuard g = h.guard();
    ASSERT_TRUE(QFile::link("/usr/lib", h.home + "/lib-link"));
    ASSERT_TRUE(QFile::link("/etc", h.home + "/etc-link"));
    ASSERT_TRUE(QFile::link(h.home + "/.ssh", h.home + "/a/ssh-link"));
    // The link itself lies in home: it may go (its target is never touched).
    EXPECT_TRUE(g.isAllowed(h.home + "/lib-link"));
    EXPECT_EQ(SafetyGuard::canonical(h.home + "/lib-link"), h.home + "/lib-link");
    // Through a link, the real place is judged.
    EXPECT_EQ(h.refusal(g, h.home + "/etc-link/passwd"),
              "/etc/passwd is outside the locations Tarvik is allowed to clean.");
    EXPECT_EQ(g.check(h.home + "/a/ssh-link/keys")->kind, Violation::Kind::ProtectedPath);
}

TEST(SafetyGuard, TheUsersNamedFoldersAreProtectedInAnyLanguage) {
    Home h;
    const QStringList dirs =
        xdg::parseUserDirs("# comment\nXDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
                           "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n"
                           "XDG_PUBLICSHARE_DIR=\"$HOME/\"\n"
                           "XDG_MUSIC_DIR=\"/srv/music\"\nBROKEN\n",
                           h.home);
    EXPECT_EQ(dirs, (QStringList{h.home + "/Schreibtisch", h.home + "/Dokumente", "/srv/music"}));
    const SafetyGuard g = h.guard(dirs);
    EXPECT_EQ(g.check(h.home + "/Dokumente")->kind, Violation::Kind::ProtectedPath);
    EXPECT_TRUE(g.isAllowed(h.home + "/Dokumente/old.pdf"));
    EXPECT_TRUE(g.isAllowed(h.home + "/a")); // pointing at home itself protects nothing new
}

TEST(SafetyGuard, PathNormalisers) {
    EXPECT_EQ(SafetyGuard::stripPrivatePrefix("/private/var/folders/x"), "/var/folders/x");
    EXPECT_EQ(SafetyGuard::stripPrivatePrefix("/private/tmp"), "/tmp");
    EXPECT_EQ(SafetyGuard::stripPrivatePrefix("/private/etcetera"), "/private/etcetera");
    EXPECT_EQ(SafetyGuard::stripPrivatePrefix("/private/Users"), "/private/Users");
    EXPECT_EQ(SafetyGuard::canonical("/"), "/");
    EXPECT_EQ(SafetyGuard::canonical("/nonexistent/a/../b/./c"), "/nonexistent/b/c");
    EXPECT_EQ(PathDisplay::abbreviate("/home/u", "/home/u"), "~");
    EXPECT_EQ(PathDisplay::abbreviate("/home/u/x/y", "/home/u/"), "~/x/y");
    EXPECT_EQ(PathDisplay::abbreviate("/home/user2/x", "/home/u"), "/home/user2/x");
}

TEST(ExclusionList, HidesTheExcludedLocationAndWhatIsInsideIt) {
    const ExclusionList list({"~/Movies/Keep", "/data/keep/", "", "relative"}, "/home/u");
    EXPECT_EQ(list.paths(), (QStringList{"/home/u/Movies/Keep", "/data/keep", "/home/u/relative"}));
    EXPECT_TRUE(list.contains(QStringLiteral("/home/u/Movies/Keep")));
    EXPECT_TRUE(list.contains(QStringLiteral("/home/u/Movies/Keep/a.mov")));
    EXPECT_FALSE(list.contains(QStringLiteral("/home/u/Movies/Keeper.mov")));
    EXPECT_TRUE(list.contains(QStringLiteral("/data/keep/x")));
    const std::vector<CleanableItem> items{{"/home/u/Movies/Keep/a.mov", 1, {}, {}},
                                           {"/home/u/Movies/b.mov", 2, {}, {}},
                                           {"/data/keep", 3, {}, {}}};
    const auto kept = list.filter(items);
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0].path, "/home/u/Movies/b.mov");
    EXPECT_EQ(ExclusionList({}, "/home/u").filter(items), items);
}
