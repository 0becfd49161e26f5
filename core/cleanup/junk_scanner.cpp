#include "core/cleanup/junk_scanner.h"

#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/directory_sizer.h"
#include "core/platform/xdg_paths.h"
#include "core/platform/xdg_user_dirs.h"
#include "core/shell/preferences.h"

#include <QDir>
#include <QFile>
#include <algorithm>
#include <dirent.h>
#include <sys/stat.h>
#include <utility>

namespace tarvik {
namespace {

bool isIgnored(const QString& name) {
    return name == QLatin1String(".DS_Store") || name == QLatin1String(".localized");
}

std::vector<QString> listNames(const QString& folder) {
    std::vector<QString> names;
    DIR* dir = ::opendir(QFile::encodeName(folder).constData());
    if (dir == nullptr) {
        return names; // an unreadable folder offers nothing, without an error
    }
    while (const dirent* d = ::readdir(dir)) {
        const char* n = d->d_name;
        if (!(n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0')))) {
            names.push_back(QFile::decodeName(n));
        }
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end()); // a stable listing order for equal sizes
    return names;
}

} // namespace

JunkScanner::JunkScanner(Options options) : options_(std::move(options)) {
    options_.home = QDir::cleanPath(options_.home);
}

JunkScanner::Options JunkScanner::optionsForCurrentUser(const Preferences& preferences) {
    Options o;
    o.home = xdg::home();
    const QString downloads = xdg::downloadDir(xdg::configHome(), o.home);
    if (downloads.startsWith(o.home + QLatin1Char('/'))) {
        o.downloads = downloads.mid(o.home.size() + 1);
    }
    o.exclusions = ExclusionList::load(preferences, o.home);
    return o;
}

std::vector<QString> JunkScanner::candidates(const ScanTarget& target) const {
    const QString folder = options_.home + QLatin1Char('/') + target.path;
    struct stat st {};
    if (::lstat(QFile::encodeName(folder).constData(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        return {}; // missing, or a link: never followed out of home
    }
    if (target.mode == ScanTarget::Mode::Whole) {
        return {folder};
    }
    std::vector<QString> out;
    for (const QString& name : listNames(folder)) {
        if (isIgnored(name)) {
            continue;
        }
        if (target.mode == ScanTarget::Mode::Children) {
            if (!target.names.contains(name)) {
                out.push_back(folder + QLatin1Char('/') + name);
            }
            continue;
        }
        if (name.startsWith(QLatin1Char('.'))) {
            continue;
        }
        const QString extension = name.section(QLatin1Char('.'), -1).toLower();
        const QString path = folder + QLatin1Char('/') + name;
        if (name.contains(QLatin1Char('.')) && target.names.contains(extension) &&
            ::lstat(QFile::encodeName(path).constData(), &st) == 0 && S_ISREG(st.st_mode)) {
            out.push_back(path);
        }
    }
    return out;
}

std::vector<JunkScanResult>
JunkScanner::scan(const std::vector<JunkCategory>& categories,
                  const std::function<void(const JunkScanResult&)>& onCategory) const {
    std::vector<JunkScanResult> results;
    const DirectorySizer sizer(options_.cancel);
    for (JunkCategory category : categories) {
        if (cancelled()) {
            break;
        }
        JunkScanResult result{category, {}, 0};
        for (const ScanTarget& target : targets(category, options_.downloads)) {
            for (const QString& path : candidates(target)) {
                if (cancelled()) {
                    return results;
                }
                if (options_.exclusions && options_.exclusions->contains(path)) {
                    continue; // an excluded location is never offered
                }
                const std::int64_t size = sizer.size(path);
                if (size <= 0) {
                    continue;
                }
                CleanableItem item{path, size, std::nullopt, std::nullopt};
                struct stat st {};
                if (::lstat(QFile::encodeName(path).constData(), &st) == 0) {
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
