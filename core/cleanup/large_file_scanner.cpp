#include "core/cleanup/large_file_scanner.h"

#include "core/cleanup/file_walk.h"

#include <QDir>
#include <QFile>
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

std::vector<FoundFile> LargeFileScanner::scan(const Options& options,
                                              const std::function<void(std::int64_t)>& onProgress,
                                              const std::atomic<bool>* cancel) const {
    const QStringList skipped = options.skippedFolders(QDir::cleanPath(home_));
    std::vector<std::string> skip;
    for (const QString& s : skipped) {
        skip.emplace_back(QFile::encodeName(s).constData());
    }
    const auto cutoff = options.olderThanDays
                            ? std::optional(QDateTime::currentDateTimeUtc().addSecs(
                                  -qint64{86'400} * *options.olderThanDays))
                            : std::nullopt;
    const qint64 cutoffSeconds = cutoff ? cutoff->toSecsSinceEpoch() : 0;

    FileWalk::Options walk;
    walk.cancel = cancel;
    walk.includeHidden = options.includeHidden;
    walk.statxMask = STATX_TYPE | STATX_BLOCKS | STATX_SIZE | STATX_MTIME;
    walk.progress = onProgress;
    walk.enter = [&skip](const std::string& parent, const char* name) {
        if (isPackageName(name)) {
            return false;
        }
        const std::string path = childPath(parent, name);
        return std::find(skip.begin(), skip.end(), path) == skip.end();
    };
    std::vector<std::vector<FoundFile>> found(
        static_cast<std::size_t>(FileWalk::maximumThreads(walk)));
    const std::int64_t minimum = options.minimumSize;
    walk.file = [&](int thread, const std::string& folder, const char* name,
                    const struct statx& sx) {
        const auto size = static_cast<std::int64_t>(sx.stx_blocks) * 512;
        if (size < minimum) {
            return;
        }
        const bool dated = (sx.stx_mask & STATX_MTIME) != 0;
        if (cutoff && dated && sx.stx_mtime.tv_sec > cutoffSeconds) {
            return; // changed after the cut-off: not old enough
        }
        FoundFile f;
        f.item.path = QFile::decodeName(childPath(folder, name).c_str());
        f.item.size = size;
        if (dated) {
            f.item.modified = QDateTime::fromSecsSinceEpoch(sx.stx_mtime.tv_sec, Qt::UTC);
        }
        f.kind = fileKind(name);
        found[static_cast<std::size_t>(thread)].push_back(std::move(f));
    };
    FileWalk::run(std::string(QFile::encodeName(QDir::cleanPath(options.root)).constData()), walk);
    std::vector<FoundFile> out;
    for (auto& part : found) {
        std::move(part.begin(), part.end(), std::back_inserter(out));
    }
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
