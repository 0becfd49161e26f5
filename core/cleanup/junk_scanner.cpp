#include "core/cleanup/junk_scanner.h"

#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/directory_sizer.h"
#include "core/sys/directory_handle.h"
#include "core/sys/file_calls.h"
#include "core/sys/file_names.h"
#include "core/text/path_display.h"

#include <QDir>
#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace tarvik {
namespace {

bool isIgnored(const QString& name) {
    return name == QLatin1String(".DS_Store") || name == QLatin1String(".localized");
}

std::vector<QString> listNames(const QString& folder) {
    std::vector<QString> names;
    DIR* dir = sys::opendir(fileName::encode(folder).c_str());
    if (dir == nullptr) {
        return names; // an unreadable folder offers nothing, without an error
    }
    while (const dirent* d = sys::readdir(dir)) {
        const char* n = d->d_name;
        if (!(n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0')))) {
            names.push_back(fileName::decode(n));
        }
    }
    sys::closedir(dir);
    std::sort(names.begin(), names.end()); // a stable listing order for equal sizes
    return names;
}

bool isFolderOrFile(const QString& path, mode_t type, bool& mountRoot) {
    struct statx sx {};
    if (sys::statx(AT_FDCWD, fileName::encode(path).c_str(),
                   AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, STATX_TYPE, &sx) != 0) {
        return false;
    }
    mountRoot = isMountRoot(sx);
    return (sx.stx_mode & S_IFMT) == type;
}

} // namespace

JunkScanner::JunkScanner(Options options) : options_(std::move(options)) {
    options_.home = QDir::cleanPath(options_.home);
}

std::vector<QString> JunkScanner::candidates(const ScanTarget& target) const {
    const QString folder = options_.home + QLatin1Char('/') + target.path;
    bool mountRoot = false;
    if (!isFolderOrFile(folder, S_IFDIR, mountRoot) || mountRoot) {
        return {}; // missing, a link (never followed out of home), or another file system
    }
    if (target.mode == ScanTarget::Mode::Whole) {
        return {folder};
    }
    std::vector<QString> out;
    for (const QString& name : listNames(folder)) {
        if (isIgnored(name)) {
            continue;
        }
        const QString path = folder + QLatin1Char('/') + name;
        if (target.mode == ScanTarget::Mode::Children) {
            struct statx sx {};
            const bool mounted =
                sys::statx(AT_FDCWD, fileName::encode(path).c_str(),
                           AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, STATX_TYPE, &sx) == 0 &&
                isMountRoot(sx);
            if (!target.names.contains(name) && !mounted) {
                out.push_back(path);
            }
            continue;
        }
        if (name.startsWith(QLatin1Char('.'))) {
            continue;
        }
        const QString extension = name.section(QLatin1Char('.'), -1).toLower();
        if (name.contains(QLatin1Char('.')) && target.names.contains(extension) &&
            isFolderOrFile(path, S_IFREG, mountRoot) && !mountRoot) {
            out.push_back(path);
        }
    }
    return out;
}

std::vector<JunkScanResult>
JunkScanner::scan(const std::vector<JunkCategory>& categories,
                  const std::function<void(const JunkScanResult&)>& onCategory) const {
    std::vector<JunkScanResult> results;
    for (JunkCategory category : categories) {
        if (cancelled()) {
            break;
        }
        JunkScanResult result{category, {}, 0};
        for (const ScanTarget& target :
             targets(category, options_.downloads, options_.trashFiles)) {
            for (const QString& path : candidates(target)) {
                if (cancelled()) {
                    return results;
                }
                if (options_.exclusions && options_.exclusions->contains(path)) {
                    continue; // an excluded location is never offered
                }
                // An excluded place inside is left out of the size, and the removal goes
                // around it.
                const QStringList inside =
                    options_.exclusions ? options_.exclusions->inside(path) : QStringList();
                DirectorySizer sizer(options_.cancel);
                std::vector<std::string> skipped;
                for (const QString& e : inside) {
                    skipped.push_back(fileName::encode(e));
                }
                sizer.skip(std::move(skipped));
                const std::int64_t size = sizer.size(path);
                // Everything in the Trash is offered, links and empty files too: nothing else
                // would ever take them away.
                if (size <= 0 && category != JunkCategory::Trash) {
                    continue;
                }
                CleanableItem item{path, size, std::nullopt, std::nullopt};
                if (!inside.isEmpty()) {
                    item.detail = QStringLiteral("Keeps %1, which you excluded.")
                                      .arg(fileName::display(
                                          PathDisplay::abbreviate(inside.front(), options_.home)));
                }
                struct stat st {};
                if (sys::lstat(fileName::encode(path).c_str(), &st) == 0) {
                    item.modified = QDateTime::fromSecsSinceEpoch(st.st_mtim.tv_sec);
                }
                result.items.push_back(std::move(item));
            }
        }
        std::stable_sort(
            result.items.begin(), result.items.end(),
            [](const CleanableItem& a, const CleanableItem& b) { return a.size > b.size; });
        for (const auto& item : result.items) {
            result.totalSize += item.size;
        }
        if (onCategory) {
            onCategory(result);
        }
        results.push_back(std::move(result));
    }
    return results;
}

std::vector<CleanupGroup> junkCleanupGroups(const std::vector<JunkScanResult>& selected,
                                            RemovalMode junkMode) {
    CleanupGroup trash{{}, RemovalMode::DeletePermanently};
    CleanupGroup rest{{}, junkMode};
    for (const auto& r : selected) {
        auto& into = alwaysDeletesPermanently(r.category) ? trash.items : rest.items;
        into.insert(into.end(), r.items.begin(), r.items.end());
    }
    std::vector<CleanupGroup> groups;
    if (!trash.items.empty()) {
        groups.push_back(std::move(trash));
    }
    if (!rest.items.empty()) {
        groups.push_back(std::move(rest));
    }
    return groups;
}

} // namespace tarvik
