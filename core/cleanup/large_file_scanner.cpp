#include "core/cleanup/large_file_scanner.h"

#include "core/cleanup/file_walk.h"
#include "core/cleanup/hard_link_note.h"
#include "core/sys/file_names.h"
#include "core/sys/file_paths.h"

#include <QDir>
#include <algorithm>
#include <mutex>

namespace tarvik {

bool isPackageName(std::string_view name) {
    static constexpr std::array<std::string_view, 11> kPackages = {
        ".app",       ".bundle",      ".framework", ".plugin",       ".kext", ".photoslibrary",
        ".xcodeproj", ".xcworkspace", ".rtfd",      ".sparsebundle", ".pkg"};
    return std::any_of(kPackages.begin(), kPackages.end(), [name](std::string_view ext) {
        return name.size() > ext.size() && name.ends_with(ext);
    });
}

QStringList FileSearchOptions::skippedFolders(const QString& home) const {
    const QString r = QDir::cleanPath(root);
    QStringList out = {r + QStringLiteral("/.Trash"), QStringLiteral("/System"),
                       QStringLiteral("/Volumes"),    QStringLiteral("/private"),
                       QStringLiteral("/dev"),        QStringLiteral("/proc"),
                       QStringLiteral("/sys"),        home + QStringLiteral("/.local/share/Trash")};
    if (!includeLibrary) {
        for (const char* data : {"/Library", "/.local", "/.cache", "/.config", "/.var", "/snap"}) {
            out << home + QLatin1String(data);
        }
    }
    return out;
}

namespace {

// A file found, with what tells its hard-linked names apart.
struct Hit {
    FoundFile file;
    std::uint64_t inode = 0;
    std::uint32_t links = 1;
};

// One row per file: a file's other names go into its note instead of rows of their own, which
// would count its space once per name. The walk stays on one file system, so an inode number
// is a file.
std::vector<FoundFile> oneRowPerFile(std::vector<Hit> hits) {
    const auto linked =
        std::partition(hits.begin(), hits.end(), [](const Hit& h) { return h.links == 1; });
    std::sort(linked, hits.end(), [](const Hit& a, const Hit& b) {
        return a.inode != b.inode ? a.inode < b.inode : a.file.item.path < b.file.item.path;
    });
    std::vector<FoundFile> out;
    out.reserve(hits.size());
    for (auto h = hits.begin(); h != hits.end();) {
        auto next = std::next(h);
        QStringList others;
        if (h->links > 1) {
            for (; next != hits.end() && next->inode == h->inode; ++next) {
                others << next->file.item.path;
            }
        }
        h->file.item.detail = hardLinkNote(others, h->links);
        out.push_back(std::move(h->file));
        h = next;
    }
    return out;
}

std::string encoded(const QString& path) {
    return fileName::encode(QDir::cleanPath(path));
}

// Where a folder really is, links followed; a walk's paths are spelled this way.
QString real(const QString& path) {
    const QString absolute = filePath::absolute(path);
    return filePath::resolved(absolute).value_or(QDir::cleanPath(absolute));
}

} // namespace

SearchScope::SearchScope(const FileSearchOptions& options, const QString& home) {
    // A relative root, or one reached through a link, is compared in the walk's own spelling.
    FileSearchOptions resolved = options;
    resolved.root = real(options.root.isEmpty() ? home : options.root);
    root_ = encoded(resolved.root);
    for (const QString& s : resolved.skippedFolders(real(home))) {
        skipped_.push_back(encoded(s));
    }
    for (const QString& e : options.excluded) {
        excluded_.push_back(encoded(e));
        skipped_.push_back(excluded_.back());
    }
}

bool SearchScope::rootExcluded() const {
    return std::any_of(excluded_.begin(), excluded_.end(), [this](const std::string& e) {
        return root_ == e || filePath::isStrictlyWithin(root_, e);
    });
}

bool SearchScope::enters(const std::string& parent, const char* name) const {
    if (isPackageName(name)) {
        return false;
    }
    const std::string path = childPath(parent, name);
    return std::find(skipped_.begin(), skipped_.end(), path) == skipped_.end();
}

bool SearchScope::offers(const std::string& folder, const char* name) const {
    return excluded_.empty() || std::find(excluded_.begin(), excluded_.end(),
                                          childPath(folder, name)) == excluded_.end();
}

std::vector<FoundFile> LargeFileScanner::scan(const Options& options,
                                              const std::function<void(std::int64_t)>& onProgress,
                                              const std::atomic<bool>* cancel) const {
    const SearchScope scope(options, home_);
    if (scope.rootExcluded()) {
        return {};
    }
    const auto cutoff = options.olderThanDays
                            ? std::optional(QDateTime::currentDateTimeUtc().addSecs(
                                  -qint64{86'400} * *options.olderThanDays))
                            : std::nullopt;
    const qint64 cutoffSeconds = cutoff ? cutoff->toSecsSinceEpoch() : 0;

    FileWalk::Options walk;
    walk.cancel = cancel;
    walk.includeHidden = options.includeHidden;
    walk.statxMask = STATX_TYPE | STATX_BLOCKS | STATX_SIZE | STATX_MTIME | STATX_INO | STATX_NLINK;
    walk.progress = onProgress;
    walk.enter = [&scope](const std::string& parent, const char* name) {
        return scope.enters(parent, name);
    };
    std::vector<std::vector<Hit>> found(static_cast<std::size_t>(FileWalk::maximumThreads(walk)));
    const std::int64_t minimum = options.minimumSize;
    walk.file = [&](int thread, const std::string& folder, const char* name,
                    const struct statx& sx) {
        const auto size = static_cast<std::int64_t>(sx.stx_blocks) * 512;
        if (size < minimum || !scope.offers(folder, name)) {
            return;
        }
        const bool dated = (sx.stx_mask & STATX_MTIME) != 0;
        if (cutoff && dated && sx.stx_mtime.tv_sec > cutoffSeconds) {
            return; // changed after the cut-off: not old enough
        }
        Hit& h = found[static_cast<std::size_t>(thread)].emplace_back();
        h.file.item.path = fileName::decode(childPath(folder, name));
        h.file.item.size = size;
        if (dated) {
            h.file.item.modified = QDateTime::fromSecsSinceEpoch(sx.stx_mtime.tv_sec, Qt::UTC);
        }
        h.file.item.scanned = FileSnapshot::of(sx);
        h.file.kind = fileKind(name);
        h.inode = sx.stx_ino;
        h.links = sx.stx_nlink;
    };
    FileWalk::run(scope.root(), walk);
    std::vector<Hit> hits;
    for (auto& part : found) {
        std::move(part.begin(), part.end(), std::back_inserter(hits));
    }
    std::vector<FoundFile> out = oneRowPerFile(std::move(hits));
    std::sort(out.begin(), out.end(), [](const FoundFile& a, const FoundFile& b) {
        return a.item.size != b.item.size ? a.item.size > b.item.size : a.item.path < b.item.path;
    });
    return out;
}

std::optional<std::int64_t> sizeThreshold(std::int64_t raw) {
    return std::find(kSizeThresholds.begin(), kSizeThresholds.end(), raw) != kSizeThresholds.end()
               ? std::optional(raw)
               : std::nullopt;
}

QString ageFilterTitle(int days) {
    switch (days) {
    case 0:
        return QStringLiteral("Any age");
    case 30:
        return QStringLiteral("Older than 1 month");
    case 180:
        return QStringLiteral("Older than 6 months");
    case 365:
        return QStringLiteral("Older than 1 year");
    case 730:
        return QStringLiteral("Older than 2 years");
    default:
        return {};
    }
}

} // namespace tarvik
