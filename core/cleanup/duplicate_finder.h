#pragma once

#include "core/cleanup/file_digest.h"
#include "core/cleanup/large_file_scanner.h"

#include <QString>
#include <atomic>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace tarvik {

// Files with identical contents, oldest first: the first is the original that is kept.
struct DuplicateGroup {
    QString id;                // the contents' SHA-256
    std::int64_t fileSize = 0; // the logical length every file of the group has
    std::vector<CleanableItem> files;
    // Per file: the bytes removing it would free (0 when the file has other names, hard links,
    // outside the group).
    std::vector<std::int64_t> freed;

    const CleanableItem* original() const { return files.empty() ? nullptr : &files.front(); }
    // What removing every copy but the original frees.
    std::int64_t wastedBytes() const;
    // The group with only the files for which `keep` holds (after a removal).
    DuplicateGroup keeping(const std::function<bool(const CleanableItem&)>& keep) const;
    // The files for which `chosen` holds, ready for removal: each goes only while the copy that
    // stays (the first file not chosen) is still there as the search saw it. One file always
    // stays: when every file is chosen, the original is not removed.
    std::vector<CleanableItem>
    removals(const std::function<bool(const CleanableItem&)>& chosen) const;
};

// The size presets of the screen, in bytes.
inline constexpr std::array<std::int64_t, 4> kDuplicateThresholds = {100'000, 1'000'000, 10'000'000,
                                                                     100'000'000};
std::optional<std::int64_t> duplicateThreshold(std::int64_t raw);

// What the walk keeps of a file: a few numbers and two pointers into text that never moves.
struct DuplicateCandidate {
    const char* folder = nullptr;
    const char* name = nullptr;
    std::uint64_t inode = 0;
    std::int64_t length = 0;       // logical: what contents are compared on
    std::int64_t allocated = 0;    // what it takes on disk
    std::int64_t mtime = kUndated; // seconds
    std::uint32_t links = 1;
    std::uint32_t mtimeNs = 0; // the nanoseconds of `mtime`

    static constexpr std::int64_t kUndated = std::numeric_limits<std::int64_t>::min();
    bool dated() const { return mtime != kUndated; }
    std::string path() const;
};

// The groups a search found, held compactly so that a million files fit in little memory;
// `group(i)` gives one group as the screens and the command line show it. Largest waste first.
class DuplicateSet {
public:
    struct Member {
        std::uint32_t name;       // into the names, sorted by length and inode
        std::uint32_t otherNames; // how many of the names after it are hard links to it
    };
    struct Group {
        Sha256 digest;
        std::int64_t length = 0;
        std::int64_t wasted = 0;
        std::size_t first = 0; // into members
        std::uint32_t count = 0;
    };

    std::size_t size() const { return groups_.size(); }
    bool empty() const { return groups_.empty(); }
    const Group& at(std::size_t i) const { return groups_[i]; }
    DuplicateGroup group(std::size_t i) const;
    std::int64_t wastedBytes() const;

private:
    friend class DuplicateFinder;
    struct Storage;
    std::shared_ptr<const Storage> storage_;       // the walk's text and candidates
    std::vector<const DuplicateCandidate*> names_; // a file's hard-linked names follow it
    std::vector<Member> members_;
    std::vector<Group> groups_;
};

// Finds groups of identical files in three stages: same logical length, same first 64 KiB, same
// SHA-256 of the whole file. Two names of one file (hard links) are one file, never a pair of
// copies. Files in `options.excluded` are left out before comparing.
class DuplicateFinder {
public:
    using Options = FileSearchOptions;
    // The phase ("Looking for files", "Comparing files"), how far it got and, while comparing,
    // how many files there are to compare so far (0 while not known). The total grows once:
    // files longer than their first 64 KiB are compared again, in full.
    using Progress =
        std::function<void(const QString& phase, std::int64_t count, std::int64_t total)>;

    explicit DuplicateFinder(QString home) : home_(std::move(home)) {}
    // Every group, largest waste first.
    std::vector<DuplicateGroup> scan(const Options& options, const Progress& onProgress = {},
                                     const std::atomic<bool>* cancel = nullptr) const;
    // The same groups, compact; empty when cancelled.
    DuplicateSet find(const Options& options, const Progress& onProgress = {},
                      const std::atomic<bool>* cancel = nullptr) const;

    // Lower-case hex SHA-256 of the first `limit` bytes (the whole file without a limit); none
    // when the file can't be opened or read, or is not as long as `expectedLength` says.
    static std::optional<QString> hash(const std::string& path,
                                       std::optional<std::int64_t> limit = std::nullopt,
                                       std::optional<std::int64_t> expectedLength = std::nullopt);

private:
    QString home_;
};

} // namespace tarvik
