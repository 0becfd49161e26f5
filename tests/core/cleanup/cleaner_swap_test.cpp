// While one remove() call works on an earlier item, a folder it already checked is swapped for a
// link out of home: the link, never what it points to, is what may go.
#include "core/cleanup/cleaner.h"
#include "core/cleanup/safety_guard.h"
#include "core/cleanup/trash.h"
#include "tests/support/raw_files.h"

#include <QTemporaryDir>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace tarvik {
namespace {

using namespace test;

const QString kOutsideSentence =
    QStringLiteral(" is outside the locations Tarvik is allowed to clean.");

class CleanerAdversarialSwap : public ::testing::TestWithParam<RemovalMode> {};

TEST_P(CleanerAdversarialSwap, FolderSwappedForALinkOutOfHome) {
    const RemovalMode mode = GetParam();
    QTemporaryDir tmp;
    ASSERT_TRUE(tmp.isValid());
    const std::string root = realRoot(tmp);
    const std::string home = root + "/home/user";
    const std::string precious = root + "/outside/precious";
    const std::string trash = home + "/.local/share/Trash";
    mkdirs(home + "/victim/deeper");
    mkdirs(precious + "/deeper");
    mkdirs(trash);
    writeAll(home + "/harmless.txt", std::string(10000, 'h'));
    writeAll(home + "/victim/v.txt", "victim");
    writeAll(home + "/victim/deeper/w.txt", "victim too");
    const std::map<std::string, std::string> preciousFiles = {
        {precious + "/v.txt", "precious v"},
        {precious + "/deeper/w.txt", std::string(20000, 'p')},
        {precious + "/only-here.txt", "precious only"},
    };
    for (const auto& [path, contents] : preciousFiles) {
        writeAll(path, contents);
    }
    struct stat harmless {};
    ASSERT_EQ(::lstat((home + "/harmless.txt").c_str(), &harmless), 0);

    const Cleaner cleaner(SafetyGuard(qpath(home), {}), Trash(qpath(trash)));
    ASSERT_TRUE(cleaner.guard().isAllowed(qpath(home + "/victim")));
    ASSERT_TRUE(cleaner.guard().isAllowed(qpath(home + "/victim/v.txt")));
    // The folder itself (absolute link), then a file in it (relative link).
    const std::vector<CleanableItem> items = {
        {qpath(home + "/harmless.txt"), 10000, {}, {}},
        {qpath(home + "/victim"), 0, {}, {}},
        {qpath(home + "/harmless.txt"), 1, {}, {}}, // gone by now: a failure, no change
        {qpath(home + "/victim2/v.txt"), 0, {}, {}},
    };
    mkdirs(home + "/victim2");
    writeAll(home + "/victim2/v.txt", "victim2");
    auto swap = [&](const std::string& folder, const std::string& target) {
        ASSERT_EQ(::rename(folder.c_str(), (folder + ".moved").c_str()), 0);
        ASSERT_EQ(::symlink(target.c_str(), folder.c_str()), 0);
    };
    std::vector<int> seen;
    const CleanReport report = cleaner.remove(items, mode, [&](int done, int) {
        seen.push_back(done);
        if (done == 1) {
            swap(home + "/victim", precious);
        } else if (done == 3) {
            swap(home + "/victim2", "../../outside/precious");
        }
    });
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 4}));

    for (const auto& [path, contents] : preciousFiles) {
        EXPECT_EQ(readAll(path), contents) << path;
    }
    // The moved folders were never named by an item and stay whole.
    EXPECT_EQ(readAll(home + "/victim.moved/v.txt"), "victim");
    EXPECT_EQ(readAll(home + "/victim.moved/deeper/w.txt"), "victim too");
    EXPECT_EQ(readAll(home + "/victim2.moved/v.txt"), "victim2");

    auto failureFor = [&](const CleanableItem& item) -> std::optional<QString> {
        for (const CleanFailure& f : report.failures) {
            if (f.item == item) {
                return f.message;
            }
        }
        return std::nullopt;
    };
    auto removed = [&](const CleanableItem& item) {
        return std::find(report.removed.begin(), report.removed.end(), item) !=
               report.removed.end();
    };
    EXPECT_TRUE(removed(items[0]));
    // home/victim: the link went (or the removal was refused and the link is still there).
    struct stat st {};
    const bool linkLeft = ::lstat((home + "/victim").c_str(), &st) == 0;
    if (removed(items[1])) {
        EXPECT_FALSE(linkLeft);
        if (mode == RemovalMode::MoveToTrash) {
            EXPECT_EQ(::lstat((trash + "/files/victim").c_str(), &st), 0);
            EXPECT_TRUE(S_ISLNK(st.st_mode)) << "the Trash holds the link, not the folder";
        }
    } else {
        ASSERT_TRUE(failureFor(items[1]).has_value());
        EXPECT_TRUE(linkLeft && S_ISLNK(st.st_mode));
    }
    ASSERT_TRUE(failureFor(items[2]).has_value());
    EXPECT_TRUE(failureFor(items[2])->startsWith(QStringLiteral("“")));
    // home/victim2/v.txt now resolves to outside/precious/v.txt: refused as outside.
    EXPECT_EQ(failureFor(items[3]),
              std::optional<QString>(qpath(precious + "/v.txt") + kOutsideSentence));
    EXPECT_EQ(::lstat((home + "/victim2").c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode));
    // Only the harmless file left home (freed, or moved to the Trash): a link frees nothing.
    const std::int64_t harmlessBytes = static_cast<std::int64_t>(harmless.st_blocks) * 512;
    const bool intoTrash = mode == RemovalMode::MoveToTrash;
    EXPECT_EQ(report.freedBytes, intoTrash ? 0 : harmlessBytes);
    EXPECT_EQ(report.trashedBytes, intoTrash ? harmlessBytes : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, CleanerAdversarialSwap,
    ::testing::Values(RemovalMode::DeletePermanently, RemovalMode::MoveToTrash),
    [](const ::testing::TestParamInfo<RemovalMode>& param) {
        return std::string(param.param == RemovalMode::MoveToTrash ? "MoveToTrash" : "Delete");
    });

} // namespace
} // namespace tarvik
