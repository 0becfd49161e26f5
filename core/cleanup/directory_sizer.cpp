#include "core/cleanup/directory_sizer.h"

#include <QFile>
#include <algorithm>
#include <condition_variable>
#include <deque>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tarvik {
namespace {

// A file with several names, kept until the end so each is counted once.
struct Linked {
    dev_t dev;
    ino_t ino;
    std::uint32_t nlink;
    std::int64_t bytes;
    bool operator<(const Linked& o) const { return dev != o.dev ? dev < o.dev : ino < o.ino; }
};

struct Tally {
    std::int64_t bytes = 0; // files with one name
    std::int64_t files = 0;
    std::int64_t unreadable = 0;
    std::int64_t otherFileSystems = 0;
    std::vector<Linked> linked;
};

std::string childPath(const std::string& dir, const char* name) {
    std::string child = dir;
    if (child.back() != '/') {
        child += '/';
    }
    child += name;
    return child;
}

class Walk {
public:
    Walk(dev_t dev, const std::atomic<bool>* cancel) : dev_(dev), cancel_(cancel) {}

    void push(std::string dir) {
        {
            std::lock_guard lock(mutex_);
            queue_.push_back(std::move(dir));
            ++pending_;
        }
        ready_.notify_one();
    }

    void run(Tally& tally) {
        std::vector<char> buffer(std::size_t{64} * 1024);
        std::string dir;
        while (next(dir)) {
            listDirectory(dir, tally, buffer);
            finish();
        }
    }

    // Lists folders on the calling thread while the tree stays narrow; true when the whole
    // tree is done, false when enough folders wait that threads pay off.
    bool runInline(Tally& tally, std::size_t wide) {
        std::vector<char> buffer(std::size_t{64} * 1024);
        for (;;) {
            std::string dir;
            {
                std::lock_guard lock(mutex_);
                if (queue_.empty()) {
                    return true;
                }
                if (queue_.size() >= wide) {
                    return false;
                }
                dir = std::move(queue_.front());
                queue_.pop_front();
            }
            listDirectory(dir, tally, buffer);
            finish();
        }
    }

private:
    bool next(std::string& dir) {
        std::unique_lock lock(mutex_);
        ready_.wait(lock, [this] { return !queue_.empty() || pending_ == 0; });
        if (queue_.empty()) {
            return false;
        }
        dir = std::move(queue_.front());
        queue_.pop_front();
        return true;
    }

    void finish() {
        std::lock_guard lock(mutex_);
        if (--pending_ == 0) {
            ready_.notify_all();
        }
    }

    bool cancelled() const {
        return cancel_ != nullptr && cancel_->load(std::memory_order_relaxed);
    }

    void listDirectory(const std::string& dir, Tally& tally, std::vector<char>& buffer) {
        if (cancelled()) {
            return;
        }
        const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0) {
            ++tally.unreadable;
            return;
        }
        struct stat self {};
        if (::fstat(fd, &self) != 0 || self.st_dev != dev_) {
            ++tally.otherFileSystems; // a mount point below the start: not entered, like du -x
            ::close(fd);
            return;
        }
        std::int64_t entries = 0;
        for (;;) {
            // getdents64 fills the buffer with many entries per call, d_type included, so a
            // folder or a link needs no stat at all.
            const ssize_t n = ::getdents64(fd, buffer.data(), buffer.size());
            if (n < 0) {
                ++tally.unreadable;
                break;
            }
            if (n == 0) {
                break;
            }
            for (ssize_t off = 0; off < n;) {
                const auto* d = reinterpret_cast<const dirent64*>(buffer.data() + off);
                off += d->d_reclen;
                const char* name = d->d_name;
                if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
                    continue;
                }
                if ((++entries & 1023) == 0 && cancelled()) {
                    ::close(fd);
                    return;
                }
                unsigned char type = d->d_type;
                if (type == DT_LNK || (type != DT_REG && type != DT_DIR && type != DT_UNKNOWN)) {
                    continue; // links count 0; devices, sockets and pipes hold no data
                }
                if (type == DT_DIR) {
                    push(childPath(dir, name));
                    continue;
                }
                struct statx sx {};
                if (::statx(fd, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC,
                            STATX_TYPE | STATX_BLOCKS | STATX_NLINK | STATX_INO, &sx) != 0) {
                    continue; // vanished meanwhile
                }
                if (S_ISDIR(sx.stx_mode)) {
                    push(childPath(dir, name));
                    continue;
                }
                if (!S_ISREG(sx.stx_mode)) {
                    continue;
                }
                const auto bytes = static_cast<std::int64_t>(sx.stx_blocks) * 512;
                ++tally.files;
                if (sx.stx_nlink > 1) {
                    tally.linked.push_back(
                        {self.st_dev, static_cast<ino_t>(sx.stx_ino), sx.stx_nlink, bytes});
                } else {
                    tally.bytes += bytes;
                }
            }
        }
        ::close(fd);
    }

    dev_t dev_;
    const std::atomic<bool>* cancel_;
    std::mutex mutex_;
    std::condition_variable ready_;
    std::deque<std::string> queue_;
    std::size_t pending_ = 0;
};

SizeResult total(std::vector<Tally>& tallies) {
    SizeResult r;
    std::vector<Linked> linked;
    for (auto& t : tallies) {
        r.allocated += t.bytes;
        r.releasable += t.bytes;
        r.files += t.files;
        r.unreadable += t.unreadable;
        r.otherFileSystems += t.otherFileSystems;
        linked.insert(linked.end(), t.linked.begin(), t.linked.end());
    }
    std::sort(linked.begin(), linked.end());
    for (std::size_t i = 0; i < linked.size();) {
        std::size_t j = i;
        while (j < linked.size() && !(linked[i] < linked[j]) && !(linked[j] < linked[i])) {
            ++j;
        }
        r.allocated += linked[i].bytes;
        // Removing frees the file only when every one of its names is in what is removed.
        if (j - i >= linked[i].nlink) {
            r.releasable += linked[i].bytes;
        }
        i = j;
    }
    return r;
}

} // namespace

SizeResult DirectorySizer::measure(const QString& path) const {
    return measure(std::string(QFile::encodeName(path).constData()));
}

SizeResult DirectorySizer::measure(const std::string& path) const {
    SizeResult r;
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0 || S_ISLNK(st.st_mode)) {
        return r;
    }
    if (!S_ISDIR(st.st_mode)) {
        r.allocated = static_cast<std::int64_t>(st.st_blocks) * 512;
        r.releasable = st.st_nlink > 1 ? 0 : r.allocated;
        r.files = S_ISREG(st.st_mode) ? 1 : 0;
        return r;
    }
    Walk walk(st.st_dev, cancel_);
    walk.push(path);
    std::vector<Tally> tallies(1);
    // Most folders a scan sizes are small: starting threads would cost more than listing them.
    if (walk.runInline(tallies[0], 8)) {
        return total(tallies);
    }
    const int wanted =
        threads_ > 0 ? threads_
                     : std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 2, 8);
    std::vector<std::thread> workers;
    tallies.resize(static_cast<std::size_t>(wanted));
    for (int i = 1; i < wanted; ++i) {
        workers.emplace_back(
            [&walk, &tallies, i] { walk.run(tallies[static_cast<std::size_t>(i)]); });
    }
    walk.run(tallies[0]);
    for (auto& w : workers) {
        w.join();
    }
    return total(tallies);
}

} // namespace tarvik
