// Opening folders below a handle with the kernel's rules, with openat2 and without it.
#include "core/sys/directory_handle.h"
#include "tests/support/mounted.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using namespace tarvik;

namespace {

using Opener = UniqueFd (*)(int, std::string_view, bool);

struct Tree {
    QTemporaryDir dir;
    std::string root;
    UniqueFd rootFd;
    Tree() {
        root = QFile::encodeName(QDir(dir.path()).canonicalPath()).toStdString();
        for (const char* d : {"a/b/c", "outside/secret", "mnt", "elsewhere/inside"}) {
            QDir().mkpath(QString::fromStdString(root + "/" + d));
        }
        EXPECT_EQ(::symlink((root + "/outside").c_str(), (root + "/a/out").c_str()), 0);
        EXPECT_EQ(::symlink("b", (root + "/a/rel").c_str()), 0);
        rootFd = UniqueFd(::open((root + "/a").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    ino_t inode(int fd) const {
        struct stat st {};
        return ::fstat(fd, &st) == 0 ? st.st_ino : 0;
    }
    ino_t inode(const std::string& path) const {
        struct stat st {};
        return ::lstat(path.c_str(), &st) == 0 ? st.st_ino : 0;
    }
};

class OpenBeneath : public ::testing::TestWithParam<Opener> {};

TEST_P(OpenBeneath, OpensRealFoldersAndRefusesLinksDotDotAndMountPoints) {
    const Opener open = GetParam();
    Tree t;
    ASSERT_TRUE(t.rootFd.valid());

    UniqueFd c = open(t.rootFd.get(), "b/c", false);
    ASSERT_TRUE(c.valid()) << std::strerror(errno);
    EXPECT_EQ(t.inode(c.get()), t.inode(t.root + "/a/b/c"));
    UniqueFd self = open(t.rootFd.get(), "", false);
    ASSERT_TRUE(self.valid());
    EXPECT_EQ(t.inode(self.get()), t.inode(t.root + "/a"));
    EXPECT_TRUE(open(t.rootFd.get(), "b//./c/", false).valid());

    // A link on the way, absolute or relative, in the middle or at the end: never followed.
    for (const char* through : {"out", "out/secret", "rel", "rel/c"}) {
        errno = 0;
        EXPECT_FALSE(open(t.rootFd.get(), through, false).valid()) << through;
        EXPECT_TRUE(errno == ELOOP || errno == ENOTDIR || errno == EXDEV) << through;
    }
    // ".." is refused even where it would stay below the start.
    for (const char* up : {"..", "b/..", "b/../b", "../outside"}) {
        errno = 0;
        EXPECT_FALSE(open(t.rootFd.get(), up, false).valid()) << up;
        EXPECT_EQ(errno, EINVAL) << up;
    }
    errno = 0;
    EXPECT_FALSE(open(t.rootFd.get(), "missing/x", false).valid());
    EXPECT_EQ(errno, ENOENT);
    ASSERT_EQ(::close(::open((t.root + "/a/file").c_str(), O_CREAT | O_WRONLY, 0600)), 0);
    errno = 0;
    EXPECT_FALSE(open(t.rootFd.get(), "file", false).valid());
    EXPECT_EQ(errno, ENOTDIR);

    // A folder swapped for a link between two opens: the second open refuses it.
    ASSERT_EQ(::rename((t.root + "/a/b").c_str(), (t.root + "/a/b.old").c_str()), 0);
    ASSERT_EQ(::symlink((t.root + "/outside").c_str(), (t.root + "/a/b").c_str()), 0);
    EXPECT_FALSE(open(t.rootFd.get(), "b/secret", false).valid());
}

TEST_P(OpenBeneath, BindMountsOfTheSameDiskAreMountPointsToo) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "mounting needs root; the tests run as root in CI";
    }
    const Opener open = GetParam();
    Tree t;
    const std::string mnt = t.root + "/a/b/mnt";
    ASSERT_EQ(::mkdir(mnt.c_str(), 0700), 0);
    const test::Mounted bind(t.root + "/elsewhere", mnt, nullptr, MS_BIND);
    ASSERT_TRUE(bind.ok) << std::strerror(errno);

    // Same device number on both sides, yet another mount.
    struct stat inside {
    }, outside{};
    ASSERT_EQ(::stat(mnt.c_str(), &inside), 0);
    ASSERT_EQ(::stat(t.root.c_str(), &outside), 0);
    EXPECT_EQ(inside.st_dev, outside.st_dev);
    EXPECT_NE(mountIdOfPath(mnt), mountIdOfPath(t.root));

    errno = 0;
    EXPECT_FALSE(open(t.rootFd.get(), "b/mnt", false).valid());
    EXPECT_EQ(errno, EXDEV);
    EXPECT_FALSE(open(t.rootFd.get(), "b/mnt/inside", false).valid());
    const UniqueFd crossed = open(t.rootFd.get(), "b/mnt/inside", true);
    ASSERT_TRUE(crossed.valid());
    EXPECT_EQ(t.inode(crossed.get()), t.inode(t.root + "/elsewhere/inside"));

    struct statx sx {};
    ASSERT_TRUE(mountIdAt(t.rootFd.get(), "b/mnt", sx, STATX_TYPE).has_value());
    EXPECT_TRUE(isMountRoot(sx));
    ASSERT_TRUE(mountIdAt(t.rootFd.get(), "b", sx, STATX_TYPE).has_value());
    EXPECT_FALSE(isMountRoot(sx));
    EXPECT_EQ(mountTopOf(mnt + "/inside"), mnt);
}

INSTANTIATE_TEST_SUITE_P(Kernel, OpenBeneath, ::testing::Values(&openBeneath, &openBeneathStepwise),
                         [](const ::testing::TestParamInfo<Opener>& param) {
                             return std::string(param.param == &openBeneath ? "Openat2"
                                                                            : "ComponentWalk");
                         });

} // namespace
