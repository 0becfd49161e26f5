#include "core/cleanup/file_walk.h"

#include "core/sys/directory_handle.h"
#include "core/sys/file_calls.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tarvik {

std::string childPath(const std::string& folder, const char* name) {
    std::string child = folder;
    if (child.empty() || child.back() != '/') {
        child += '/';
    }
    child += name;
    return child;
}

namespace {

class Walk {
public:
    Walk(int rootFd, std::size_t labelLength, const FileWalk::Options& options)
        : rootFd_(rootFd), labelLength_(labelLength), o_(options) {}

    void push(std::string dir) {
        {
            std::lock_guard lock(mutex_);
            queue_.push_back(std::move(dir));
            ++pending_;
        }
        ready_.notify_one();
    }

    void run(int thread) {
        std::vector<char> buffer(std::size_t{64} * 1024);
        std::string dir;
        while (next(dir)) {
            list(dir, thread, buffer);
            finish();
        }
    }

    // Lists folders on the calling thread while the tree stays narrow; true when the whole
    // tree is done, false when enough folders wait that threads pay off.
    bool runInline(std::size_t wide) {
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
            list(dir, 0, buffer);
            finish();
        }
    }

    FileWalk::Totals totals() const {
        return {entries_.load(), unreadable_.load(), otherFileSystems_.load(), 1};
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
        return o_.cancel != nullptr && o_.cancel->load(std::memory_order_relaxed);
    }

    void count() {
        const std::int64_t n = entries_.fetch_add(1, std::memory_order_relaxed) + 1;
        if (o_.progress && o_.progressEvery > 0 && n % o_.progressEvery == 0) {
            o_.progress(n);
        }
    }

    void folder(const std::string& dir, const char* name) {
        if (!o_.enter || o_.enter(dir, name)) {
            push(childPath(dir, name));
        }
    }

    // The folder `dir` (a path that starts with the label), opened below the root's handle.
    UniqueFd open(const std::string& dir) const {
        const std::string_view relative = dir.size() > labelLength_
                                              ? std::string_view(dir).substr(labelLength_ + 1)
                                              : std::string_view();
        return openBeneath(rootFd_, relative);
    }

    void list(const std::string& dir, int thread, std::vector<char>& buffer) {
        if (cancelled()) {
            return;
        }
        const UniqueFd handle = open(dir);
        if (!handle.valid()) {
            // A mount point below the start (EXDEV), or a folder that can't be read or was
            // swapped for a link since it was listed.
            ++(errno == EXDEV ? otherFileSystems_ : unreadable_);
            return;
        }
        const int fd = handle.get();
        for (;;) {
            const ssize_t n = sys::getdents64(fd, buffer.data(), buffer.size());
            if (n < 0) {
                ++unreadable_;
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
                count();
                if ((entries_.load(std::memory_order_relaxed) & 1023) == 0 && cancelled()) {
                    return;
                }
                if (name[0] == '.' && !o_.includeHidden) {
                    continue;
                }
                const unsigned char type = d->d_type;
                if (type == DT_LNK || (type != DT_REG && type != DT_DIR && type != DT_UNKNOWN)) {
                    continue; // links are never followed; devices, sockets and pipes hold no data
                }
                if (type == DT_DIR) {
                    folder(dir, name);
                    continue;
                }
                struct statx sx {};
                if (sys::statx(fd, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC,
                               o_.statxMask | STATX_TYPE, &sx) != 0) {
                    continue; // vanished meanwhile
                }
                if (isMountRoot(sx)) {
                    ++otherFileSystems_; // a file mounted over this name: not this mount's
                } else if (S_ISDIR(sx.stx_mode)) {
                    folder(dir, name);
                } else if (S_ISREG(sx.stx_mode) && o_.file) {
                    o_.file(thread, dir, name, sx);
                }
            }
        }
    }

    int rootFd_;
    std::size_t labelLength_;
    const FileWalk::Options& o_;
    std::mutex mutex_;
    std::condition_variable ready_;
    std::deque<std::string> queue_;
    std::size_t pending_ = 0;
    std::atomic<std::int64_t> entries_ = 0;
    std::atomic<std::int64_t> unreadable_ = 0;
    std::atomic<std::int64_t> otherFileSystems_ = 0;
};

} // namespace

int FileWalk::maximumThreads(const Options& options) {
    return options.threads > 0
               ? options.threads
               : std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 2, 8);
}

FileWalk::Totals FileWalk::run(const std::string& root, const Options& options) {
    const UniqueFd fd(sys::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.valid()) {
        return {0, 1, 0, 1};
    }
    return run(fd.get(), root, options);
}

FileWalk::Totals FileWalk::run(int rootFd, const std::string& label, const Options& options) {
    std::string start = label;
    while (start.size() > 1 && start.back() == '/') {
        start.pop_back();
    }
    // The label "/" has children "/a": nothing to drop before the relative part but the slash.
    Walk walk(rootFd, start == "/" ? 0 : start.size(), options);
    walk.push(start);
    // Most folders are small: starting threads would cost more than listing them.
    if (walk.runInline(8)) {
        return walk.totals();
    }
    const int wanted = maximumThreads(options);
    std::vector<std::thread> workers;
    for (int i = 1; i < wanted; ++i) {
        workers.emplace_back([&walk, i] { walk.run(i); });
    }
    walk.run(0);
    for (auto& w : workers) {
        w.join();
    }
    Totals t = walk.totals();
    t.threads = wanted;
    return t;
}

} // namespace tarvik
