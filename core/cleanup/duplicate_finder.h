#pragma once

#include "core/cleanup/large_file_scanner.h"

#include <QString>
#include <atomic>
#include <functional>
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
};

// The size presets of the screen, in bytes.
inline constexpr std::array<std::int64_t, 4> kDuplicateThresholds = {100'000, 1'000'000, 10'000'000,
                                                                     100'000'000};
std::optional<std::int64_t> duplicateThreshold(std::int64_t raw);

// Finds groups of identical files in three stages: same logical length, same first 64 KiB, same
// SHA-256 of the whole file. Two names of one file (hard links) are one file, never a pair of
// copies. Largest waste first.
class DuplicateFinder {
public:
    using Options = FileSearchOptions;
    // phase ("Looking for files", "Comparing files") and a count.
    using Progress = std::function<void(const QString& phase, std::int64_t count)>;

    explicit DuplicateFinder(QString home) : home_(std::move(home)) {}
    std::vector<DuplicateGroup> scan(const Options& options, const Progress& onProgress = {},
                                     const std::atomic<bool>* cancel = nullptr) const;

    // Lower-case hex SHA-256 of the first `limit` bytes (the whole file without a limit); none
    // when the file can't be opened or read, or is shorter than `expectedLength` says.
    static std::optional<QString> hash(const std::string& path,
                                       std::optional<std::int64_t> limit = std::nullopt,
                                       std::optional<std::int64_t> expectedLength = std::nullopt);

private:
    QString home_;
};

} // namespace tarvik
