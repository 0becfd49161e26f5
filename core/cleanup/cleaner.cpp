#include "core/cleanup/cleaner.h"

#include "core/cleanup/directory_sizer.h"
#include "core/cleanup/safe_remove.h"
#include "core/sys/directory_handle.h"
#include "core/sys/file_calls.h"
#include "core/sys/file_names.h"
#include "core/sys/file_paths.h"
#include "core/text/metric_format.h"
#include "core/text/path_display.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tarvik {

// A folder removals start from: an allowed root, or a mounted search root below one.
struct Cleaner::Start {
    std::string path; // canonical, the kernel's bytes
    UniqueFd fd;
    std::uint64_t mount = 0;
};

namespace {

using filePath::isStrictlyWithin;

// `path` below the folder `top` ("a/b"), or nothing when it doesn't lie below it.
std::optional<std::string_view> below(std::string_view path, std::string_view top) {
    if (path == top) {
        return std::string_view();
    }
    if (!isStrictlyWithin(path, top)) {
        return std::nullopt;
    }
    return path.substr(top == "/" ? 1 : top.size() + 1);
}

QString shown(const QString& text) {
    return fileName::display(text);
}

QString couldNotRemove(const CleanableItem& item, int error, RemovalMode mode) {
    return (mode == RemovalMode::MoveToTrash
                ? QStringLiteral("“%1” couldn't be moved to the Trash: %2.")
                : QStringLiteral("“%1” couldn't be removed: %2."))
        .arg(shown(item.name()), QString::fromLocal8Bit(std::strerror(error)));
}

constexpr unsigned kLook =
    STATX_TYPE | STATX_INO | STATX_SIZE | STATX_MTIME | STATX_NLINK | STATX_BLOCKS;

} // namespace

Cleaner::Cleaner(SafetyGuard guard, Trash trash, ExclusionList exclusions)
    : guard_(std::move(guard)), trash_(std::move(trash)), exclusions_(std::move(exclusions)) {}

Cleaner Cleaner::startingAlsoAt(const QString& folder) const {
    Cleaner c = *this;
    c.extraStarts_ << folder;
    return c;
}

Cleaner Cleaner::withExclusions(ExclusionList exclusions) const {
    Cleaner c = *this;
    c.exclusions_ = std::move(exclusions);
    return c;
}

std::vector<Cleaner::Start> Cleaner::openStarts() const {
    std::vector<Start> starts;
    for (const QString& root : guard_.allowedRoots()) {
        Start s;
        s.path = fileName::encode(root);
        s.fd = openDirectoryNoFollow(s.path);
        if (const auto mount = s.fd.valid() ? mountIdOf(s.fd.get()) : std::nullopt) {
            s.mount = *mount;
            starts.push_back(std::move(s));
        }
    }
    const std::size_t roots = starts.size();
    for (const QString& folder : extraStarts_) {
        // Spelled as the kernel reaches it: a root named through a link still counts.
        const QString absolute = filePath::absolute(folder);
        const std::string path = fileName::encode(
            filePath::resolved(absolute).value_or(SafetyGuard::canonical(absolute)));
        for (std::size_t i = 0; i < roots; ++i) {
            if (!isStrictlyWithin(path, starts[i].path)) {
                continue;
            }
            // Reached from the root's handle through real folders only; used when it is itself
            // where a mount is attached, which is what lets removals enter it at all.
            UniqueFd fd = openBeneath(starts[i].fd.get(), *below(path, starts[i].path), true);
            struct statx sx {};
            if (fd.valid() &&
                sys::statx(fd.get(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_MNT_ID, &sx) ==
                    0 &&
                isMountRoot(sx)) {
                starts.push_back({path, std::move(fd), mountIdFrom(sx)});
            }
            break;
        }
    }
    return starts;
}

CleanReport Cleaner::remove(const std::vector<CleanableItem>& items, RemovalMode mode,
                            const RemovalProgress& onProgress,
                            const std::atomic<bool>* cancel) const {
    CleanReport report;
    const std::vector<Start> starts = openStarts();
    const int total = static_cast<int>(items.size());
    for (int i = 0; i < total; ++i) {
        if (cancel != nullptr && cancel->load()) {
            break; // the rest is neither removed nor reported
        }
        removeOne(items[static_cast<std::size_t>(i)], mode, starts, report, cancel);
        if (onProgress) {
            onProgress(i + 1, total);
        }
    }
    return report;
}

void Cleaner::removeOne(const CleanableItem& item, RemovalMode mode,
                        const std::vector<Start>& starts, CleanReport& report,
                        const std::atomic<bool>* cancel) const {
    const auto fail = [&](const QString& message) {
        report.failures.push_back({QUuid::createUuid(), item, message});
    };
    const SafetyGuard::Judgement judged = guard_.judge(item.path);
    if (judged.violation) {
        return fail(judged.violation->description());
    }
    if (exclusions_.error()) {
        return fail(*exclusions_.error());
    }
    const QString home = guard_.allowedRoots().value(0);
    const auto where = [&home](const std::string& path) {
        return shown(PathDisplay::abbreviate(fileName::decode(path), home));
    };
    if (exclusions_.contains(judged.canonical)) {
        return fail(QStringLiteral("%1 is in your exclusion list and was skipped.")
                        .arg(shown(judged.canonical)));
    }
    const std::string canonical = fileName::encode(judged.canonical);
    const Start* start = nullptr;
    for (const Start& s : starts) {
        if (isStrictlyWithin(canonical, s.path) &&
            (start == nullptr || s.path.size() > start->path.size())) {
            start = &s;
        }
    }
    if (start == nullptr) {
        return fail(couldNotRemove(item, ENOENT, mode)); // its allowed root is gone
    }

    // From here on the item is reached only through handles, from the start's downwards.
    const std::size_t slash = canonical.rfind('/');
    const std::string parentPath = slash == 0 ? "/" : canonical.substr(0, slash);
    const std::string name = canonical.substr(slash + 1);
    // The item lies strictly below the start, so its parent is the start or below it.
    const UniqueFd parent = openBeneath(start->fd.get(), below(parentPath, start->path).value());
    if (!parent.valid()) {
        if (errno == EXDEV) {
            return fail(QStringLiteral("%1 lies on another file system mounted below %2, and "
                                       "Tarvik never removes across a mount point.")
                            .arg(where(canonical), where(start->path)));
        }
        return fail(couldNotRemove(item, errno, mode));
    }
    struct statx st {};
    const auto mount = mountIdAt(parent.get(), name.c_str(), st, kLook);
    if (!mount) {
        return fail(couldNotRemove(item, errno, mode));
    }
    if (*mount != start->mount || isMountRoot(st)) {
        return fail(QStringLiteral("%1 is a mount point, and Tarvik never removes across one.")
                        .arg(where(canonical)));
    }
    // A file a search found goes only while it is still that file, and a duplicate only while
    // the copy that stays is still there as it was seen.
    if (item.scanned && (!S_ISREG(st.stx_mode) || FileSnapshot::of(st) != *item.scanned)) {
        return fail(QStringLiteral("“%1” changed since the search and was left as it is.")
                        .arg(shown(item.name())));
    }
    if (item.keptCopy) {
        struct statx kept {};
        const std::string keptPath = fileName::encode(SafetyGuard::canonical(item.keptCopy->path));
        if (sys::statx(AT_FDCWD, keptPath.c_str(), AT_SYMLINK_NOFOLLOW, kLook, &kept) != 0 ||
            !S_ISREG(kept.stx_mode) || FileSnapshot::of(kept) != item.keptCopy->scanned ||
            kept.stx_ino == st.stx_ino) {
            return fail(QStringLiteral("“%1” was left: the copy that stays, %2, changed or moved "
                                       "since the search.")
                            .arg(shown(item.name()), where(keptPath)));
        }
    }
    const DirectorySizer sizer(cancel);

    if (mode == RemovalMode::MoveToTrash) {
        if (trash_.holds(canonical)) {
            return fail(QStringLiteral("“%1” is in the Trash already.").arg(shown(item.name())));
        }
        const SizeResult before = sizer.measureAt(parent.get(), parentPath, name.c_str());
        if (before.otherFileSystems > 0) {
            return fail(QStringLiteral("“%1” holds a mount point, so it was not moved to the "
                                       "Trash.")
                            .arg(shown(item.name())));
        }
        if (const QStringList inside = exclusions_.inside(judged.canonical); !inside.isEmpty()) {
            return fail(QStringLiteral("“%1” holds %2, which you excluded, so it was not moved "
                                       "to the Trash.")
                            .arg(shown(item.name()), where(fileName::encode(inside.front()))));
        }
        if (auto error = trash_.moveToTrash(parent.get(), parentPath, name)) {
            return fail(QStringLiteral("“%1” couldn't be moved to the Trash: %2.")
                            .arg(shown(item.name()), *error));
        }
        report.addRemoved(item, mode, before.releasable);
        return;
    }

    // Excluded places inside are known by their inode on this mount, whatever they are called.
    std::vector<std::uint64_t> excluded;
    for (const QString& e : exclusions_.inside(judged.canonical)) {
        struct statx ex {};
        if (sys::statx(AT_FDCWD, fileName::encode(e).c_str(), AT_SYMLINK_NOFOLLOW,
                       STATX_INO | STATX_MNT_ID, &ex) == 0 &&
            mountIdFrom(ex) == start->mount) {
            excluded.push_back(ex.stx_ino);
        }
    }
    const TreeRemover remover(start->mount, std::move(excluded));
    TreeRemoval done = remover.remove(parent.get(), name.c_str(), canonical);
    if (done.error != 0 && S_ISDIR(st.stx_mode) && !done.left()) {
        const TreeRemoval again = remover.remove(parent.get(), name.c_str(), canonical);
        done.error = again.error; // best effort, once more
        done.freed += again.freed;
        done.mountsLeft = again.mountsLeft;
        done.excludedLeft = again.excludedLeft;
    }
    struct statx after {};
    const bool gone =
        sys::statx(parent.get(), name.c_str(), AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, STATX_TYPE,
                   &after) != 0 &&
        errno == ENOENT;
    if (gone) {
        report.addRemoved(item, mode, done.freed);
        // A Trash entry goes together with its description, so no orphan .trashinfo remains.
        if (const auto info = trash_.infoFolderFor(parentPath)) {
            const auto relative = below(*info, start->path);
            const UniqueFd infoDir =
                relative ? openBeneath(start->fd.get(), *relative) : UniqueFd();
            const std::string infoName = name + ".trashinfo";
            struct statx infoSt {};
            if (infoDir.valid() &&
                mountIdAt(infoDir.get(), infoName.c_str(), infoSt, kLook).has_value() &&
                S_ISREG(infoSt.stx_mode) &&
                sys::unlinkat(infoDir.get(), infoName.c_str(), 0) == 0 && infoSt.stx_nlink == 1) {
                report.addFreed(static_cast<std::int64_t>(infoSt.stx_blocks) * 512);
            }
        }
        return;
    }
    if (!S_ISDIR(st.stx_mode)) {
        return fail(couldNotRemove(item, done.error != 0 ? done.error : EBUSY, mode));
    }
    report.addFreed(done.freed);
    if (!done.left()) {
        const SizeResult left = sizer.measureAt(parent.get(), parentPath, name.c_str());
        return fail(QStringLiteral("Partially cleaned; %1 is in use or protected.")
                        .arg(MetricFormat::bytes(left.allocated)));
    }
    QStringList kept;
    for (const std::string& m : done.mountsLeft) {
        kept << QStringLiteral("%1, which is another file system").arg(where(m));
    }
    for (const std::string& e : done.excludedLeft) {
        kept << QStringLiteral("%1, which you excluded").arg(where(e));
    }
    fail(QStringLiteral("Partially cleaned; kept %1.%2")
             .arg(kept.join(QStringLiteral("; ")),
                  done.error != 0 ? QStringLiteral(" Some of the rest is in use or protected.")
                                  : QString()));
}

} // namespace tarvik
