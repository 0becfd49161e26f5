#include "core/cleanup/trash.h"

#include "core/cleanup/safety_guard.h"
#include "core/sys/directory_handle.h"
#include "core/sys/file_calls.h"
#include "core/sys/file_names.h"
#include "core/sys/xdg_paths.h"

#include <QDateTime>
#include <QDir>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tarvik {
namespace {

QString reason(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

// A folder of this user's, not a link: what GLib and the standard accept as a trash folder.
bool ownFolder(int fd) {
    struct stat st {};
    return sys::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::getuid();
}

// Makes `name` in `dirFd` a folder of ours (mode 700) if it is missing, and opens it without
// following a link; a folder that is someone else's is refused.
UniqueFd ensureDir(int dirFd, const char* name) {
    if (sys::mkdirat(dirFd, name, 0700) != 0 && errno != EEXIST) {
        return UniqueFd();
    }
    UniqueFd fd(sys::openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (fd.valid() && !ownFolder(fd.get())) {
        errno = EPERM;
        return UniqueFd();
    }
    return fd;
}

struct TrashDir {
    UniqueFd files;
    UniqueFd info;
    std::string topdir; // empty for the home trash: paths are then absolute
};

std::optional<TrashDir> openTrash(const std::string& trashPath, std::string topdir) {
    const std::string parent = trashPath.substr(0, trashPath.rfind('/'));
    const std::string leaf = trashPath.substr(trashPath.rfind('/') + 1);
    if (topdir.empty()) {
        // The parent of the home trash is the data folder; create it as XDG asks.
        QDir().mkpath(fileName::decode(parent));
    }
    UniqueFd parentFd = openDirectoryNoFollow(parent);
    if (!parentFd.valid()) {
        return std::nullopt;
    }
    UniqueFd trash = ensureDir(parentFd.get(), leaf.c_str());
    if (!trash.valid()) {
        return std::nullopt;
    }
    TrashDir t{ensureDir(trash.get(), "files"), ensureDir(trash.get(), "info"), std::move(topdir)};
    if (!t.files.valid() || !t.info.valid()) {
        return std::nullopt;
    }
    return t;
}

bool isMountTop(const std::string& path) {
    if (path == "/") {
        return true;
    }
    struct statx sx {};
    return sys::statx(AT_FDCWD, path.c_str(), AT_STATX_DONT_SYNC, STATX_MNT_ID, &sx) == 0 &&
           isMountRoot(sx);
}

// Writes `contents` as `name` in `dirFd`, the name appearing only once the contents are whole
// and only if it was free (EEXIST otherwise): an unnamed file linked in, or a temporary name
// where the file system has no unnamed files. Returns 0 or the errno.
int createWhole(int dirFd, const std::string& name, const QByteArray& contents) {
    const auto writeAll = [&contents](int fd) {
        const auto size = static_cast<std::size_t>(contents.size());
        const ssize_t n = sys::write(fd, contents.constData(), size);
        if (n == static_cast<ssize_t>(size)) {
            return 0;
        }
        return n < 0 ? errno : ENOSPC; // a short write is a full disk
    };
    const int anonymous = sys::openat(dirFd, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, 0600);
    if (anonymous >= 0) {
        int error = writeAll(anonymous);
        if (error == 0) {
            const std::string self = "/proc/self/fd/" + std::to_string(anonymous);
            if (sys::linkat(AT_FDCWD, self.c_str(), dirFd, name.c_str(), AT_SYMLINK_FOLLOW) != 0) {
                error = errno;
            }
        }
        sys::close(anonymous);
        if (error != ENOENT) { // ENOENT: no /proc to link through; use a temporary name
            return error;
        }
    }
    const std::string temporary = ".tarvik-" + std::to_string(::getpid()) + "-" + name + ".part";
    const int fd =
        sys::openat(dirFd, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        return errno;
    }
    int error = writeAll(fd);
    sys::close(fd);
    if (error == 0 && sys::linkat(dirFd, temporary.c_str(), dirFd, name.c_str(), 0) != 0) {
        error = errno;
    }
    sys::unlinkat(dirFd, temporary.c_str(), 0);
    return error;
}

} // namespace

Trash::Trash(QString homeTrash) : homeTrash_(std::move(homeTrash)) {}

Trash Trash::forCurrentUser() {
    return Trash(xdg::dataHome() + QStringLiteral("/Trash"));
}

QByteArray Trash::trashInfo(const std::string& path, const QString& deletionDate) {
    // The bytes themselves are encoded, so a name that is not UTF-8 is restored as it was.
    return QByteArray("[Trash Info]\nPath=") +
           QByteArray::fromStdString(path).toPercentEncoding("/") + QByteArray("\nDeletionDate=") +
           deletionDate.toLatin1() + QByteArray("\n");
}

std::optional<std::string> Trash::infoFolderFor(const std::string& folder) const {
    if (!folder.ends_with("/files")) {
        return std::nullopt;
    }
    const std::string trash = folder.substr(0, folder.size() - 6);
    const std::string info = trash + "/info";
    if (trash == fileName::encode(SafetyGuard::canonical(homeTrash_))) {
        return info;
    }
    const std::string uid = std::to_string(::getuid());
    for (const std::string& suffix : {"/.Trash-" + uid, "/.Trash/" + uid}) {
        if (trash.ends_with(suffix)) {
            const std::string top = trash.size() == suffix.size()
                                        ? std::string("/")
                                        : trash.substr(0, trash.size() - suffix.size());
            // Only a trash of this user's own, as for moving into it: another user's folder of
            // that name is not ours to tidy.
            struct stat st {};
            if (isMountTop(top) && sys::lstat(trash.c_str(), &st) == 0 && S_ISDIR(st.st_mode) &&
                st.st_uid == ::getuid()) {
                return info;
            }
        }
    }
    return std::nullopt;
}

bool Trash::holds(const std::string& path) const {
    for (std::string folder = path; folder.size() > 1;) {
        folder.resize(std::max<std::size_t>(folder.rfind('/'), 1));
        if (infoFolderFor(folder)) {
            return true;
        }
    }
    return false;
}

std::optional<QString> Trash::moveToTrash(int parentFd, const std::string& parentPath,
                                          const std::string& name) const {
    struct statx item {};
    const auto itemMount = mountIdAt(parentFd, name.c_str(), item, STATX_TYPE);
    if (!itemMount) {
        return reason(errno);
    }
    const std::string absolute = (parentPath == "/" ? "" : parentPath) + "/" + name;
    // Where the home trash really is: a home reached through a link (/home → /var/home) still has
    // one, opened below without following links.
    const std::string home = fileName::encode(SafetyGuard::canonical(homeTrash_));
    // The home trash's mount: that of the trash, or of the nearest folder above it.
    std::string probe = home;
    std::optional<std::uint64_t> homeMount;
    while (!(homeMount = mountIdOfPath(probe)) && probe.size() > 1) {
        probe = probe.substr(0, std::max<std::size_t>(probe.rfind('/'), 1));
    }

    std::optional<TrashDir> trash;
    if (homeMount == itemMount) {
        trash = openTrash(home, {});
    } else {
        const std::string top = mountTopOf(parentPath);
        const std::string uid = std::to_string(::getuid());
        // $topdir/.Trash must be a real folder with the sticky bit; only then use $uid in it.
        struct stat shared {};
        if (sys::lstat((top + "/.Trash").c_str(), &shared) == 0 && S_ISDIR(shared.st_mode) &&
            (shared.st_mode & S_ISVTX) != 0) {
            trash = openTrash((top == "/" ? "" : top) + "/.Trash/" + uid, top);
        }
        if (!trash) {
            trash = openTrash((top == "/" ? "" : top) + "/.Trash-" + uid, top);
        }
    }
    if (!trash) {
        return QStringLiteral("there is no usable Trash on the disk that holds it");
    }

    std::string stored = absolute;
    if (!trash->topdir.empty()) {
        stored = absolute.substr(trash->topdir == "/" ? 1 : trash->topdir.size() + 1);
    }
    const QString date =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    const QByteArray info = trashInfo(stored, date);
    for (int n = 1; n < 10000; ++n) {
        const std::string candidate = n == 1 ? name : name + "." + std::to_string(n);
        const std::string infoName = candidate + ".trashinfo";
        struct stat taken {};
        if (sys::fstatat(trash->files.get(), candidate.c_str(), &taken, AT_SYMLINK_NOFOLLOW) == 0) {
            continue; // a stray file without its info: leave it, take the next name
        }
        const int claimed = createWhole(trash->info.get(), infoName, info);
        if (claimed == EEXIST) {
            continue;
        }
        if (claimed != 0) {
            return reason(claimed);
        }
        int moved = sys::renameat2(parentFd, name.c_str(), trash->files.get(), candidate.c_str(),
                                   RENAME_NOREPLACE);
        if (moved != 0 && errno == EINVAL) {
            // A file system without RENAME_NOREPLACE: the name was free a moment ago.
            moved = sys::renameat(parentFd, name.c_str(), trash->files.get(), candidate.c_str());
        }
        if (moved == 0) {
            return std::nullopt;
        }
        const int e = errno;
        sys::unlinkat(trash->info.get(), infoName.c_str(), 0);
        if (e == EEXIST) {
            continue; // taken meanwhile by another trashing
        }
        return reason(e);
    }
    return QStringLiteral("the Trash has too many items of this name");
}

} // namespace tarvik
