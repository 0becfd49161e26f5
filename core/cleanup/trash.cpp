#include "core/cleanup/trash.h"

#include "core/cleanup/safe_remove.h"
#include "core/platform/xdg_paths.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QUrl>
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

// Makes `name` in `dirFd` a folder of ours (mode 700) if it is missing, and opens it without
// following a link.
UniqueFd ensureDir(int dirFd, const char* name) {
    if (::mkdirat(dirFd, name, 0700) != 0 && errno != EEXIST) {
        return UniqueFd();
    }
    return UniqueFd(::openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

struct TrashDir {
    UniqueFd files;
    UniqueFd info;
    std::string topdir; // empty for the home trash: paths are then absolute
};

std::optional<TrashDir> openTrash(const std::string& trashPath, std::string topdir) {
    const std::string parent = trashPath.substr(0, trashPath.rfind('/'));
    const std::string leaf = trashPath.substr(trashPath.rfind('/') + 1);
    if (::mkdir(parent.c_str(), 0700) != 0 && errno != EEXIST) {
        // the parent of the home trash is the data folder; create it as XDG asks
        QDir().mkpath(QFile::decodeName(parent.c_str()));
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

// The top folder of the mount holding `path`: climb while the parent is on the same device.
std::string mountTop(std::string path, dev_t dev) {
    while (path != "/") {
        const auto slash = path.rfind('/');
        const std::string parent = slash == 0 ? "/" : path.substr(0, slash);
        struct stat st {};
        if (::stat(parent.c_str(), &st) != 0 || st.st_dev != dev) {
            return path;
        }
        path = parent;
    }
    return path;
}

} // namespace

Trash::Trash(QString homeTrash) : homeTrash_(std::move(homeTrash)) {}

Trash Trash::forCurrentUser() {
    return Trash(xdg::dataHome() + QStringLiteral("/Trash"));
}

QByteArray Trash::trashInfo(const std::string& path, const QString& deletionDate) {
    return QByteArray("[Trash Info]\nPath=") +
           QUrl::toPercentEncoding(QString::fromStdString(path), "/") +
           QByteArray("\nDeletionDate=") + deletionDate.toLatin1() + QByteArray("\n");
}

std::optional<QString> Trash::moveToTrash(int parentFd, const std::string& parentPath,
                                          const std::string& name) const {
    struct stat item {};
    if (::fstatat(parentFd, name.c_str(), &item, AT_SYMLINK_NOFOLLOW) != 0) {
        return reason(errno);
    }
    const std::string absolute = (parentPath == "/" ? "" : parentPath) + "/" + name;
    const std::string home = QFile::encodeName(homeTrash_).toStdString();
    // The home trash's file system: that of the trash, or of the nearest folder above it.
    struct stat homeSt {};
    std::string probe = home;
    while (::stat(probe.c_str(), &homeSt) != 0 && probe.size() > 1) {
        probe = probe.substr(0, std::max<std::size_t>(probe.rfind('/'), 1));
    }

    std::optional<TrashDir> trash;
    if (homeSt.st_dev == item.st_dev) {
        trash = openTrash(home, {});
    } else {
        const std::string top = mountTop(parentPath, item.st_dev);
        const std::string uid = std::to_string(::getuid());
        // $topdir/.Trash must be a real folder with the sticky bit; only then use $uid in it.
        struct stat shared {};
        if (::lstat((top + "/.Trash").c_str(), &shared) == 0 && S_ISDIR(shared.st_mode) &&
            (shared.st_mode & S_ISVTX) != 0) {
            trash = openTrash(top + "/.Trash/" + uid, top);
        }
        if (!trash) {
            trash = openTrash(top + "/.Trash-" + uid, top);
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
        const int fd = ::openat(trash->info.get(), infoName.c_str(),
                                O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) {
                continue;
            }
            return reason(errno);
        }
        struct stat taken {};
        if (::fstatat(trash->files.get(), candidate.c_str(), &taken, AT_SYMLINK_NOFOLLOW) == 0) {
            ::close(fd);
            ::unlinkat(trash->info.get(), infoName.c_str(), 0);
            continue; // a stray file without its info: leave it, take the next name
        }
        const bool written = ::write(fd, info.constData(), static_cast<std::size_t>(info.size())) ==
                             static_cast<ssize_t>(info.size());
        ::close(fd);
        if (written &&
            ::renameat(parentFd, name.c_str(), trash->files.get(), candidate.c_str()) == 0) {
            return std::nullopt;
        }
        const int e = written ? errno : EIO;
        ::unlinkat(trash->info.get(), infoName.c_str(), 0);
        return reason(e);
    }
    return QStringLiteral("the Trash has too many items of this name");
}

} // namespace tarvik
