// The floor for walking a folder tree: the least work that sizes a tree and finds its large
// files, on one thread. Each folder is opened relative to its parent (openat, O_DIRECTORY |
// O_NOFOLLOW), listed with raw getdents64 calls into a 64 KiB buffer (the entry types come
// with the names, so folders and links need no stat), and each regular file gets one statx
// relative to its folder (AT_SYMLINK_NOFOLLOW, type, length, blocks, inode and link count).
// Symbolic links are never followed; folders that can't be opened are counted and passed over.
// Allocated bytes (st_blocks × 512) count each inode once: only files with several names go
// into a set. It does not check for mount points: the benchmark's tree is on one file system.
//
// usage: tarvik_bench_floor_walk ROOT [MIN_BYTES]   (MIN_BYTES: 50000000 by default)
// Prints one line of key=value pairs.
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <unordered_set>
#include <vector>

namespace {

constexpr std::size_t kBuffer = 64 * 1024;

struct Totals {
    std::uint64_t names = 0;       // regular file names
    std::uint64_t files = 0;       // distinct regular files (inodes)
    std::uint64_t allocated = 0;   // bytes, each inode once
    std::uint64_t largeLength = 0; // names with st_size >= the minimum
    std::uint64_t largeBlocks = 0; // names with st_blocks × 512 >= the minimum
    std::uint64_t folders = 0;
    std::uint64_t unreadable = 0;
};

class FloorWalk {
public:
    explicit FloorWalk(std::uint64_t minimum) : minimum_(minimum) {}

    void enter(int parent, const char* name, std::size_t depth) {
        const int fd = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0) {
            ++t_.unreadable;
            return;
        }
        ++t_.folders;
        list(fd, depth);
        ::close(fd);
    }

    const Totals& totals() const { return t_; }

private:
    // One buffer per depth, kept for the whole walk: a folder's buffer still holds its unread
    // entries while its subfolders are listed.
    char* buffer(std::size_t depth) {
        while (buffers_.size() <= depth) {
            buffers_.push_back(std::make_unique<char[]>(kBuffer));
        }
        return buffers_[depth].get();
    }

    void list(int fd, std::size_t depth) {
        char* buf = buffer(depth);
        for (;;) {
            const long n = ::syscall(SYS_getdents64, fd, buf, kBuffer);
            if (n <= 0) {
                if (n < 0) {
                    ++t_.unreadable;
                }
                return;
            }
            for (long off = 0; off < n;) {
                const auto* d = reinterpret_cast<const dirent64*>(buf + off);
                off += d->d_reclen;
                const char* name = d->d_name;
                if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
                    continue;
                }
                if (d->d_type == DT_DIR) {
                    enter(fd, name, depth + 1);
                } else if (d->d_type == DT_REG || d->d_type == DT_UNKNOWN) {
                    file(fd, name, depth);
                }
            }
        }
    }

    void file(int fd, const char* name, std::size_t depth) {
        struct statx sx {};
        if (::statx(fd, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC,
                    STATX_TYPE | STATX_SIZE | STATX_BLOCKS | STATX_INO | STATX_NLINK, &sx) != 0) {
            return;
        }
        if (S_ISDIR(sx.stx_mode)) {
            enter(fd, name, depth + 1);
            return;
        }
        if (!S_ISREG(sx.stx_mode)) {
            return;
        }
        const std::uint64_t bytes = sx.stx_blocks * 512;
        ++t_.names;
        t_.largeLength += sx.stx_size >= minimum_ ? 1 : 0;
        t_.largeBlocks += bytes >= minimum_ ? 1 : 0;
        if (sx.stx_nlink > 1 && !linked_.insert(sx.stx_ino).second) {
            return; // another name of a file already counted
        }
        ++t_.files;
        t_.allocated += bytes;
    }

    std::uint64_t minimum_;
    Totals t_;
    std::vector<std::unique_ptr<char[]>> buffers_;
    std::unordered_set<std::uint64_t> linked_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: %s ROOT [MIN_BYTES]\n", argv[0]);
        return 2;
    }
    const std::uint64_t minimum = argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 50'000'000;
    FloorWalk walk(minimum);
    walk.enter(AT_FDCWD, argv[1], 0);
    const Totals& t = walk.totals();
    std::printf("names=%" PRIu64 " files=%" PRIu64 " allocated=%" PRIu64 " large_length=%" PRIu64
                " large_blocks=%" PRIu64 " folders=%" PRIu64 " unreadable=%" PRIu64 "\n",
                t.names, t.files, t.allocated, t.largeLength, t.largeBlocks, t.folders,
                t.unreadable);
    return t.folders > 0 ? 0 : 1;
}
