#pragma once

#include "core/cleanup/cleanable_item.h"
#include "core/cleanup/file_kind.h"

#include <QString>
#include <atomic>
#include <functional>
#include <optional>
#include <vector>

namespace tarvik {

// A file the large-file or duplicate search found.
struct FoundFile {
    CleanableItem item; // size: allocated bytes
    FileKind kind = FileKind::Other;
};

// The walk both searches share: the home folder and what it leaves out.
struct FileSearchOptions {
    QString root;                 // where to look: the home folder by default
    std::int64_t minimumSize = 0; // bytes
    bool includeLibrary = false;  // the apps' own data: ~/Library, ~/.local, ~/.cache, …
    bool includeHidden = false;   // names starting with "."
    QStringList excluded;         // the user's exclusion list: never offered, never entered
    // Folders never entered: the Trash, the system's own trees, and unless `includeLibrary`
    // the apps' data folders; absolute and standardised.
    QStringList skippedFolders(const QString& home) const;
};

// What a search walks: its root, the folders it never enters (bundles, the skipped folders and
// excluded ones) and the files it never offers (excluded ones). Paths as the file system
// spells them.
class SearchScope {
public:
    SearchScope(const FileSearchOptions& options, const QString& home);
    const std::string& root() const { return root_; }
    // The root is excluded itself, or lies in an excluded folder: nothing to offer.
    bool rootExcluded() const;
    bool enters(const std::string& parent, const char* name) const;
    bool offers(const std::string& folder, const char* name) const;

private:
    std::string root_;
    std::vector<std::string> skipped_;
    std::vector<std::string> excluded_;
};

// Whether a folder name is that of a bundle whose insides are one document or application
// (".app", ".bundle", ".framework", …): never entered.
bool isPackageName(std::string_view name);

// Single files above a size, optionally older than an age, largest first. Progress every 500
// entries; cancelling ends the walk within a fraction of a second and returns what was found.
class LargeFileScanner {
public:
    struct Options : FileSearchOptions {
        std::optional<int> olderThanDays;
    };
    explicit LargeFileScanner(QString home) : home_(std::move(home)) {}
    std::vector<FoundFile> scan(const Options& options,
                                const std::function<void(std::int64_t)>& onProgress = {},
                                const std::atomic<bool>* cancel = nullptr) const;

private:
    QString home_;
};

// The size presets of the screen (bytes) and the age presets (days, 0 = any age).
inline constexpr std::array<std::int64_t, 5> kSizeThresholds = {
    50'000'000, 100'000'000, 500'000'000, 1'000'000'000, 5'000'000'000};
std::optional<std::int64_t> sizeThreshold(std::int64_t raw);
inline constexpr std::array<int, 5> kAgeFilters = {0, 30, 180, 365, 730};
QString ageFilterTitle(int days);

} // namespace tarvik
