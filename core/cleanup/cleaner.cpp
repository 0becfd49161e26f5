#include "core/cleanup/cleaner.h"

#include "core/cleanup/directory_sizer.h"
#include "core/cleanup/path_display.h"
#include "core/cleanup/safe_remove.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tarvik {
namespace {

QString couldNotRemove(const CleanableItem& item, int error, RemovalMode mode) {
    return (mode == RemovalMode::MoveToTrash
                ? QStringLiteral("“%1” couldn't be moved to the Trash: %2.")
                : QStringLiteral("“%1” couldn't be removed: %2."))
        .arg(item.name(), QString::fromLocal8Bit(std::strerror(error)));
}

} // namespace

Cleaner::Cleaner(SafetyGuard guard, Trash trash)
    : guard_(std::move(guard)), trash_(std::move(trash)) {}

CleanReport Cleaner::remove(const std::vector<CleanableItem>& items, RemovalMode mode,
                            const RemovalProgress& onProgress,
                            const std::atomic<bool>* cancel) const {
    CleanReport report;
    const int total = static_cast<int>(items.size());
    for (int i = 0; i < total; ++i) {
        if (cancel != nullptr && cancel->load()) {
            break; // the rest is neither removed nor reported
        }
        removeOne(items[static_cast<std::size_t>(i)], mode, report, cancel);
        if (onProgress) {
            onProgress(i + 1, total);
        }
    }
    return report;
}

void Cleaner::removeOne(const CleanableItem& item, RemovalMode mode, CleanReport& report,
                        const std::atomic<bool>* cancel) const {
    if (const auto violation = guard_.check(item.path)) {
        report.failures.push_back({QUuid::createUuid(), item, violation->description()});
        return;
    }
    // From here on the item is reached only through the validated folder's handle.
    const std::string canonical =
        QFile::encodeName(SafetyGuard::canonical(item.path)).toStdString();
    const auto slash = canonical.rfind('/');
    const std::string parentPath = slash == 0 ? "/" : canonical.substr(0, slash);
    const std::string name = canonical.substr(slash + 1);
    UniqueFd parent = openDirectoryNoFollow(parentPath);
    struct stat parentSt {};
    struct stat st {};
    if (!parent.valid() || ::fstat(parent.get(), &parentSt) != 0 ||
        ::fstatat(parent.get(), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
        report.failures.push_back({QUuid::createUuid(), item, couldNotRemove(item, errno, mode)});
        return;
    }
    // What removing really frees, measured now: a file with other names elsewhere frees
    // nothing, and a size measured at scan time may be stale.
    const DirectorySizer sizer(cancel);
    const SizeResult before = S_ISLNK(st.st_mode) ? SizeResult{} : sizer.measure(canonical);

    if (mode == RemovalMode::MoveToTrash) {
        if (auto error = trash_.moveToTrash(parent.get(), parentPath, name)) {
            report.failures.push_back({QUuid::createUuid(), item,
                                       QStringLiteral("“%1” couldn't be moved to the Trash: %2.")
                                           .arg(item.name(), *error)});
            return;
        }
        report.addFreed(before.releasable);
        report.removed.push_back(item);
        return;
    }

    int error = removeEntryAt(parent.get(), name.c_str(), parentSt.st_dev);
    if (error != 0 && S_ISDIR(st.st_mode)) {
        error =
            removeEntryAt(parent.get(), name.c_str(), parentSt.st_dev); // best effort, once more
    }
    if (error == 0) {
        report.addFreed(before.releasable);
        report.removed.push_back(item);
        // A Trash entry goes together with its description, so no orphan .trashinfo remains.
        if (parentPath.ends_with("/Trash/files")) {
            const std::string info = parentPath.substr(0, parentPath.size() - 5) + "info";
            if (UniqueFd infoDir = openDirectoryNoFollow(info); infoDir.valid()) {
                const std::string infoName = name + ".trashinfo";
                struct stat infoSt {};
                const bool present =
                    ::fstatat(infoDir.get(), infoName.c_str(), &infoSt, AT_SYMLINK_NOFOLLOW) == 0;
                if (present && ::unlinkat(infoDir.get(), infoName.c_str(), 0) == 0 &&
                    S_ISREG(infoSt.st_mode) && infoSt.st_nlink == 1) {
                    report.addFreed(static_cast<std::int64_t>(infoSt.st_blocks) * 512);
                }
            }
        }
        return;
    }
    if (!S_ISDIR(st.st_mode)) {
        report.failures.push_back({QUuid::createUuid(), item, couldNotRemove(item, error, mode)});
        return;
    }
    const SizeResult left = sizer.measure(canonical);
    report.addFreed(std::max<std::int64_t>(before.releasable - left.releasable, 0));
    report.failures.push_back({QUuid::createUuid(), item,
                               QStringLiteral("Partially cleaned; %1 is in use or protected.")
                                   .arg(PathDisplay::bytes(left.allocated))});
}

} // namespace tarvik
