#include "core/cleanup/duplicate_finder.h"

#include "core/cleanup/file_walk.h"

#include <QDir>
#include <QFile>
#include <algorithm>
#include <fcntl.h>
#include <map>
#include <openssl/evp.h>
#include <sys/sysmacros.h>
#include <thread>
#include <unistd.h>

namespace tarvik {
namespace {

constexpr std::int64_t kHead = 65'536;
constexpr std::size_t kChunk = 1'048'576;

struct Candidate {
    std::string path;
    std::int64_t length = 0;    // logical
    std::int64_t allocated = 0; // what it takes on disk
    std::optional<std::int64_t> mtime;
    dev_t dev = 0;
    ino_t ino = 0;
    std::uint32_t links = 1;
    std::vector<std::string> otherNames; // hard links found by the walk
};

// Runs `work(i)` for i in [0, n) on a few threads; stops early when cancelled.
void parallelFor(std::size_t n, const std::atomic<bool>* cancel,
                 const std::function<void(std::size_t)>& work) {
    std::atomic<std::size_t> next = 0;
    auto run = [&] {
        for (std::size_t i; (i = next++) < n;) {
            if (cancel != nullptr && cancel->load(std::memory_order_relaxed)) {
                return;
            }
            work(i);
        }
    };
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
    std::vector<std::thread> pool;
    for (unsigned t = 1; t < threads && t < n; ++t) {
        pool.emplace_back(run);
    }
    run();
    for (auto& t : pool) {
        t.join();
    }
}

QString hex(const unsigned char* digest, unsigned length) {
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(digest), static_cast<qsizetype>(length)).toHex());
}

} // namespace

std::int64_t DuplicateGroup::wastedBytes() const {
    std::int64_t sum = 0;
    for (std::size_t i = 1; i < freed.size(); ++i) {
        sum += freed[i];
    }
    return sum;
}

DuplicateGroup
DuplicateGroup::keeping(const std::function<bool(const CleanableItem&)>& keep) const {
    DuplicateGroup g;
    g.id = id;
    g.fileSize = fileSize;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (keep(files[i])) {
            g.files.push_back(files[i]);
            g.freed.push_back(freed[i]);
        }
    }
    return g;
}

std::optional<std::int64_t> duplicateThreshold(std::int64_t raw) {
    return std::find(kDuplicateThresholds.begin(), kDuplicateThresholds.end(), raw) !=
                   kDuplicateThresholds.end()
               ? std::optional(raw)
               : std::nullopt;
}

std::optional<QString> DuplicateFinder::hash(const std::string& path,
                                             std::optional<std::int64_t> limit,
                                             std::optional<std::int64_t> expectedLength) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        return std::nullopt;
    }
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    thread_local std::vector<char> buffer(kChunk);
    EVP_MD_CTX* ctx = EVP_MD_CTX_new();
    bool ok = ctx != nullptr && EVP_DigestInit_ex(ctx, EVP_sha256(), nullptr) == 1;
    std::int64_t total = 0;
    while (ok && (!limit || total < *limit)) {
        const std::size_t want =
            limit ? static_cast<std::size_t>(std::min<std::int64_t>(kChunk, *limit - total))
                  : kChunk;
        const ssize_t n = ::read(fd, buffer.data(), want);
        if (n < 0) {
            ok = false;
        } else if (n == 0) {
            break;
        } else {
            ok = EVP_DigestUpdate(ctx, buffer.data(), static_cast<std::size_t>(n)) == 1;
            total += n;
        }
    }
    ::close(fd);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    ok = ok && EVP_DigestFinal_ex(ctx, digest, &length) == 1;
    EVP_MD_CTX_free(ctx);
    // A file that changed length since the walk is not compared at all.
    if (!ok || (expectedLength && !limit && total != *expectedLength)) {
        return std::nullopt;
    }
    return hex(digest, length);
}

std::vector<DuplicateGroup> DuplicateFinder::scan(const Options& options,
                                                  const Progress& onProgress,
                                                  const std::atomic<bool>* cancel) const {
    std::vector<std::string> skip;
    for (const QString& s : options.skippedFolders(QDir::cleanPath(home_))) {
        skip.emplace_back(QFile::encodeName(s).constData());
    }
    FileWalk::Options walk;
    walk.cancel = cancel;
    walk.includeHidden = options.includeHidden;
    walk.statxMask = STATX_TYPE | STATX_BLOCKS | STATX_SIZE | STATX_MTIME | STATX_INO | STATX_NLINK;
    if (onProgress) {
        walk.progress = [&onProgress](std::int64_t n) {
            onProgress(QStringLiteral("Looking for files"), n);
        };
    }
    walk.enter = [&skip](const std::string& parent, const char* name) {
        return !isPackageName(name) &&
               std::find(skip.begin(), skip.end(), childPath(parent, name)) == skip.end();
    };
    std::vector<std::vector<Candidate>> found(
        static_cast<std::size_t>(FileWalk::maximumThreads(walk)));
    const std::int64_t minimum = std::max<std::int64_t>(options.minimumSize, 1);
    walk.file = [&](int thread, const std::string& folder, const char* name,
                    const struct statx& sx) {
        const auto length = static_cast<std::int64_t>(sx.stx_size);
        if (length < minimum) {
            return;
        }
        Candidate c;
        c.path = childPath(folder, name);
        c.length = length;
        c.allocated = static_cast<std::int64_t>(sx.stx_blocks) * 512;
        if ((sx.stx_mask & STATX_MTIME) != 0) {
            c.mtime = sx.stx_mtime.tv_sec;
        }
        c.dev = makedev(sx.stx_dev_major, sx.stx_dev_minor);
        c.ino = static_cast<ino_t>(sx.stx_ino);
        c.links = sx.stx_nlink;
        found[static_cast<std::size_t>(thread)].push_back(std::move(c));
    };
    FileWalk::run(std::string(QFile::encodeName(QDir::cleanPath(options.root)).constData()), walk);

    // One candidate per file: a second name of the same inode is a hard link, not a copy.
    std::vector<Candidate> files;
    {
        std::map<std::pair<dev_t, ino_t>, std::size_t> seen;
        for (auto& part : found) {
            for (auto& c : part) {
                const auto key = std::make_pair(c.dev, c.ino);
                if (const auto it = seen.find(key); it != seen.end()) {
                    files[it->second].otherNames.push_back(std::move(c.path));
                } else {
                    seen.emplace(key, files.size());
                    files.push_back(std::move(c));
                }
            }
        }
    }
    if (cancel != nullptr && cancel->load()) {
        return {};
    }

    // Stage 1: only lengths shared by at least two files.
    std::map<std::int64_t, std::vector<std::size_t>> byLength;
    for (std::size_t i = 0; i < files.size(); ++i) {
        byLength[files[i].length].push_back(i);
    }
    std::vector<std::size_t> stage2;
    for (const auto& [length, members] : byLength) {
        if (members.size() > 1) {
            stage2.insert(stage2.end(), members.begin(), members.end());
        }
    }
    // Stage 2: the first 64 KiB.
    std::atomic<std::int64_t> compared = 0;
    auto report = [&] {
        const std::int64_t n = ++compared;
        if (onProgress && n % 100 == 0) {
            onProgress(QStringLiteral("Comparing files"), n);
        }
    };
    std::vector<std::optional<QString>> head(files.size());
    parallelFor(stage2.size(), cancel, [&](std::size_t k) {
        const std::size_t i = stage2[k];
        head[i] = hash(files[i].path, kHead);
        report();
    });
    std::map<std::pair<std::int64_t, QString>, std::vector<std::size_t>> byHead;
    for (std::size_t i : stage2) {
        if (head[i]) {
            byHead[{files[i].length, *head[i]}].push_back(i);
        }
    }
    // Stage 3: the whole file, unless the first 64 KiB were the whole file.
    std::vector<std::size_t> stage3;
    for (const auto& [key, members] : byHead) {
        if (members.size() > 1 && key.first > kHead) {
            stage3.insert(stage3.end(), members.begin(), members.end());
        }
    }
    std::vector<std::optional<QString>> full(files.size());
    parallelFor(stage3.size(), cancel, [&](std::size_t k) {
        const std::size_t i = stage3[k];
        full[i] = hash(files[i].path, std::nullopt, files[i].length);
        report();
    });
    if (cancel != nullptr && cancel->load()) {
        return {};
    }
    std::map<QString, std::vector<std::size_t>> byContents;
    for (const auto& [key, members] : byHead) {
        if (members.size() < 2) {
            continue;
        }
        for (std::size_t i : members) {
            const std::optional<QString>& digest = key.first > kHead ? full[i] : head[i];
            if (digest) {
                byContents[QString::number(key.first) + QLatin1Char(':') + *digest].push_back(i);
            }
        }
    }

    std::vector<DuplicateGroup> groups;
    for (auto& [key, members] : byContents) {
        if (members.size() < 2) {
            continue;
        }
        std::sort(members.begin(), members.end(), [&](std::size_t a, std::size_t b) {
            const auto ma = files[a].mtime.value_or(std::numeric_limits<std::int64_t>::min());
            const auto mb = files[b].mtime.value_or(std::numeric_limits<std::int64_t>::min());
            return ma != mb ? ma < mb : files[a].path < files[b].path;
        });
        DuplicateGroup g;
        g.id = key.section(QLatin1Char(':'), 1);
        g.fileSize = files[members.front()].length;
        for (std::size_t i : members) {
            const Candidate& c = files[i];
            CleanableItem item;
            item.path = QFile::decodeName(c.path.c_str());
            item.size = c.allocated;
            if (c.mtime) {
                item.modified = QDateTime::fromSecsSinceEpoch(*c.mtime, Qt::UTC);
            }
            const std::size_t elsewhere = c.links - 1;
            if (elsewhere > 0) {
                QStringList names;
                for (const auto& n : c.otherNames) {
                    names << QFile::decodeName(n.c_str());
                }
                item.detail = names.isEmpty()
                                  ? QStringLiteral("This file has %1 other name(s) (hard links) "
                                                   "outside the search; removing this name frees "
                                                   "nothing.")
                                        .arg(elsewhere)
                                  : QStringLiteral("Also named %1 (hard links to the same file); "
                                                   "removing one name frees nothing.")
                                        .arg(names.join(QStringLiteral(", ")));
            }
            g.files.push_back(std::move(item));
            g.freed.push_back(elsewhere > 0 ? 0 : c.allocated);
        }
        groups.push_back(std::move(g));
    }
    std::stable_sort(groups.begin(), groups.end(),
                     [](const DuplicateGroup& a, const DuplicateGroup& b) {
                         return a.wastedBytes() > b.wastedBytes();
                     });
    return groups;
}

} // namespace tarvik
