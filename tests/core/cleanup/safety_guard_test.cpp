#include "core/cleanup/exclusion_list.h"
#include "core/cleanup/safety_guard.h"
#include "core/sys/xdg_user_dirs.h"
#include "core/text/path_display.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <unistd.h>

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

TEST(SafetyGuard, AHomeOfSlashOrOfSomeoneElseAllowsNothing) {
    // A service account or a container without a home: HOME=/ must not make "/" a root.
    const SafetyGuard slash(QStringLiteral("/"), {"/Applications"});
    ASSERT_TRUE(slash.homeProblem());
    EXPECT_TRUE(slash.allowedRoots().isEmpty());
    for (const QString& p : {QStringLiteral("/some/where/p.txt"), QStringLiteral("/tmp/x"),
                             QStringLiteral("/Applications/Foo.app")}) {
        const auto v = slash.check(p);
        ASSERT_TRUE(v) << p.toStdString();
        EXPECT_EQ(v->description(), "Your home folder is “/”, so Tarvik removes nothing: it "
                                    "cleans only inside a home folder of your own.");
    }
    // Protected places keep their own, more exact refusal.
    EXPECT_EQ(slash.check("/usr/bin/ls")->kind, Violation::Kind::ProtectedPath);

    Home h;
    const SafetyGuard missing(h.home + "/nobody-lives-here", {});
    ASSERT_TRUE(missing.homeProblem());
    EXPECT_EQ(missing.check(h.home + "/nobody-lives-here/x")->kind, Violation::Kind::NoUsableHome);
    QFile::remove(h.home + "/plain-file");
    ASSERT_TRUE(QFile(h.home + "/plain-file").open(QIODevice::WriteOnly));
    EXPECT_TRUE(SafetyGuard(h.home + "/plain-file", {}).homeProblem());

    if (::geteuid() == 0) {
        const QString theirs = h.dir.path() + "/home/someone";
        QDir().mkpath(theirs);
        ASSERT_EQ(::chown(QFile::encodeName(theirs).constData(), 65534, 65534), 0);
        const SafetyGuard other(theirs, {});
        ASSERT_TRUE(other.homeProblem());
        EXPECT_EQ(other.check(theirs + "/x")->description(),
                  "Your home folder “" + QDir(theirs).canonicalPath() +
                      "” is not a folder you own, so Tarvik removes nothing.");
    }
}

TEST(SafetyGuard, AHomeReachedThroughALinkIsJudgedWhereItReallyIs) {
    Home h;
    // As on systems where /home is a link to /var/home.
    const QString linked = h.dir.path() + "/linked-home";
    ASSERT_TRUE(QFile::link(h.home, linked));
    const SafetyGuard g(linked, {});
    EXPECT_FALSE(g.homeProblem());
    EXPECT_EQ(g.allowedRoots(), QStringList{h.home});
    EXPECT_TRUE(g.isAllowed(linked + "/Movies/old.mov"));
    EXPECT_TRUE(g.isAllowed(h.home + "/Movies/old.mov"));
    EXPECT_EQ(g.check(linked + "/Documents")->kind, Violation::Kind::ProtectedPath);
    EXPECT_EQ(g.check(linked + "/.ssh/keys")->kind, Violation::Kind::ProtectedPath);
    // The link itself lies outside home: it is judged (and would be removed) as itself.
    EXPECT_EQ(g.check(linked)->kind, Violation::Kind::OutsideAllowedRoots);
}

TEST(SafetyGuard, PathsNamedByDotsOrEmptyAreRefusedAsRmRefusesThem) {
    Home h;
    const SafetyGuard g = h.guard();
    const QString cwd = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(h.home + "/a"));
    for (const QString& p : {QString(), QStringLiteral("."), QStringLiteral(".."),
                             QStringLiteral("./"), QStringLiteral("../"), h.home + "/a/.",
                             h.home + "/a/..", h.home + "/a/./", h.home + "/Movies/../a/."}) {
        const auto v = g.check(p);
        ASSERT_TRUE(v) << "\"" << p.toStdString() << "\"";
        EXPECT_EQ(v->kind, Violation::Kind::NamedByDots) << p.toStdString();
    }
    EXPECT_EQ(g.check(QString())->description(), "An empty path names nothing and was skipped.");
    EXPECT_EQ(g.check(h.home + "/a/.")->description(),
              h.home +
                  "/a/. ends in “.” or “..” and was skipped: name the folder by its own path.");
    // A trailing slash still names the folder itself, as it does for rm.
    EXPECT_TRUE(g.isAllowed(h.home + "/a/"));
    EXPECT_EQ(g.judge(h.home + "/a/").canonical, h.home + "/a");
    // Names that merely start with dots are names like any other.
    EXPECT_TRUE(g.isAllowed(h.home + "/a/..."));
    EXPECT_TRUE(g.isAllowed(h.home + "/a/..hidden"));
    ASSERT_TRUE(QDir::setCurrent(cwd));
}

TEST(SafetyGuard, DotDotAfterALinkOrAMissingFolderIsRefusedNotGuessed) {
    Home h;
    const SafetyGuard g = h.guard();
    const QString precious = h.dir.path() + "/outside/precious";
    QDir().mkpath(precious + "/sub");
    // ~/lnk leads to precious/sub: the kernel's ~/lnk/../p.txt is precious/p.txt, while the text
    // says ~/p.txt.
    ASSERT_TRUE(QFile::link(precious + "/sub", h.home + "/lnk"));
    const auto afterLink = g.check(h.home + "/lnk/../p.txt");
    ASSERT_TRUE(afterLink);
    EXPECT_EQ(afterLink->kind, Violation::Kind::DotDotAfterLink);
    EXPECT_EQ(afterLink->description(),
              h.home + "/lnk/../p.txt goes up with “..” from a symbolic link or a missing folder, "
                       "so it is unclear which folder it means, and was skipped.");
    // A link whose target has the same parent as the link: both readings meet, nothing to guess.
    ASSERT_TRUE(QFile::link(h.home + "/Movies", h.home + "/movies-link"));
    EXPECT_EQ(g.judge(h.home + "/movies-link/../a/x").canonical, h.home + "/a/x");
    EXPECT_TRUE(g.isAllowed(h.home + "/movies-link/../a/x"));
    // Where the kernel and the text agree, ".." is fine.
    EXPECT_TRUE(g.isAllowed(h.home + "/Movies/../a/x"));
    EXPECT_EQ(g.judge(h.home + "/Movies/../a/x").canonical, h.home + "/a/x");
    // A ".." after a folder that does not exist: rm would fail, Tarvik refuses.
    EXPECT_EQ(g.check(h.home + "/missing/../a/x")->kind, Violation::Kind::DotDotAfterLink);
}

TEST(SafetyGuard, XdgFoldersAreProtectedWhereverTheVariablesMovedThem) {
    Home h;
    const char* names[] = {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME",
                           "XDG_CACHE_HOME"};
    std::map<std::string, std::optional<std::string>> saved;
    for (const char* n : names) {
        const char* v = std::getenv(n);
        saved[n] = v ? std::optional<std::string>(v) : std::nullopt;
    }
    ::setenv("HOME", QFile::encodeName(h.home).constData(), 1);
    ::setenv("XDG_DATA_HOME", QFile::encodeName(h.home + "/data").constData(), 1);
    ::setenv("XDG_CONFIG_HOME", QFile::encodeName(h.home + "/cfg").constData(), 1);
    ::setenv("XDG_STATE_HOME", QFile::encodeName(h.home + "/state").constData(), 1);
    ::setenv("XDG_CACHE_HOME", QFile::encodeName(h.home + "/cache").constData(), 1);
    const SafetyGuard g = SafetyGuard::forCurrentUser();
    for (const auto& [n, v] : saved) {
        if (v) {
            ::setenv(n.c_str(), v->c_str(), 1);
        } else {
            ::unsetenv(n.c_str());
        }
    }
    for (const QString& p : {h.home + "/data/keyrings/login.keyring", h.home + "/data/keyrings",
                             h.home + "/data/Trash", h.home + "/cfg", h.home + "/data",
                             h.home + "/state", h.home + "/cache"}) {
        const auto v = g.check(p);
        ASSERT_TRUE(v) << p.toStdString();
        EXPECT_EQ(v->kind, Violation::Kind::ProtectedPath) << p.toStdString();
    }
    // What lives in them is still the user's to clean, as in ~/.cache.
    EXPECT_TRUE(g.isAllowed(h.home + "/cache/app"));
    EXPECT_TRUE(g.isAllowed(h.home + "/data/app/old.log"));
    // The usual places stay protected too.
    EXPECT_EQ(g.check(h.home + "/.local/share/keyrings/x")->kind, Violation::Kind::ProtectedPath);
}

TEST(SafetyGuard, AProtectedPlaceThatIsALinkIsProtectedWhereItLeads) {
    Home h;
    // ~/.gnupg kept in a dotfiles folder: what lies in it is reached through the link's target.
    QDir().mkpath(h.home + "/dotfiles/gnupg");
    ASSERT_TRUE(QFile::link(h.home + "/dotfiles/gnupg", h.home + "/.gnupg"));
    const SafetyGuard g = h.guard();
    EXPECT_EQ(g.check(h.home + "/.gnupg/private-keys-v1.d/key")->kind,
              Violation::Kind::ProtectedPath);
    EXPECT_EQ(g.check(h.home + "/dotfiles/gnupg/pubring.kbx")->kind,
              Violation::Kind::ProtectedPath);
    EXPECT_TRUE(g.isAllowed(h.home + "/dotfiles/vimrc"));
}
