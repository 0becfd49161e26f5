#include "core/cleanup/duplicate_finder.h"

#include "core/cleanup/file_walk.h"
#include "core/cleanup/hard_link_note.h"
#include "core/sys/file_names.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <thread>

namespace tarvik {
namespace {

constexpr std::int64_t kHead = 65'536;

// Text that never moves once written: the walk's folder paths and names, each ending in NUL.
class TextArena {
public:
    const char* add(const char* text, std::size_t length) {
        if (left_ < length + 1) {
            const std::size_t size = std::max(kBlock, length + 1);
            blocks_.emplace_back(new char[size]);
            next_ = blocks_.back().get();
            left_ = size;
        }
        std::memcpy(next_, text, length);
        next_[length] = '\0';
        const char* at = next_;
        next_ += length + 1;
        left_ -= length + 1;
        return at;
    }

private:
    static constexpr std::size_t kBlock = 64 * 1024;
    std::vector<std::unique_ptr<char[]>> blocks_;
    char* next_ = nullptr;
    std::size_t left_ = 0;
};

// Candidates in blocks that never move, allocated a thousand at a time.
class CandidateBlocks {
public:
    DuplicateCandidate& add() {
        if (used_ == kBlock) {
            blocks_.emplace_back(new DuplicateCandidate[kBlock]);
            used_ = 0;
        }
        ++size_;
        return blocks_.back()[used_++];
    }
    std::size_t size() const { return size_; }
    template <typename F> void forEach(const F& use) const {
        for (std::size_t b = 0; b < blocks_.size(); ++b) {
            const std::size_t n = b + 1 < blocks_.size() ? kBlock : used_;
            for (std::size_t i = 0; i < n; ++i) {
                use(blocks_[b][i]);
            }
        }
    }

private:
    static constexpr std::size_t kBlock = 1024;
    std::vector<std::unique_ptr<DuplicateCandidate[]>> blocks_;
    std::size_t used_ = kBlock;
    std::size_t size_ = 0;
};

// What one walking thread found.
struct Listing {
    TextArena text;
    CandidateBlocks files;
    const char* folder = nullptr;
    std::size_t folderLength = 0;
};

// A file being compared: one name of it, the hard-linked names after it, and its digest so far.
// Its length and inode are the name's; kept small, as there is one for nearly every file.
struct Work {
    std::uint32_t name = 0;
    std::uint32_t otherNames = 0;
    Sha256 digest{};
    bool ok = false;
};

using Names = std::vector<const DuplicateCandidate*>;

bool sameContents(const Work& a, const Work& b, const Names& names) {
    return names[a.name]->length == names[b.name]->length && a.ok == b.ok && a.digest == b.digest;
}

std::int64_t age(const DuplicateCandidate& c) {
    return c.mtime; // no date: the earliest
}

// Oldest first, ties by path (worked out only for files of the same age).
void orderOldestFirst(std::vector<Work>::iterator first, std::vector<Work>::iterator last,
                      const Names& names) {
    std::sort(first, last, [&](const Work& a, const Work& b) {
        return age(*names[a.name]) < age(*names[b.name]);
    });
    for (auto i = first; i != last;) {
        auto j = std::next(i);
        while (j != last && age(*names[j->name]) == age(*names[i->name])) {
            ++j;
        }
        if (j - i > 1) {
            std::vector<std::pair<std::string, Work>> byPath;
            for (auto k = i; k != j; ++k) {
                byPath.emplace_back(names[k->name]->path(), *k);
            }
            std::sort(byPath.begin(), byPath.end(),
                      [](const auto& a, const auto& b) { return a.first < b.first; });
            for (auto& [path, w] : byPath) {
                *i++ = w;
            }
        }
        i = j;
    }
}

// Runs `work(i)` for i in [0, n) on more threads than cores: reading files from a cold disk
// waits far more than it hashes, and the disk serves several reads at once. Stops early when
// cancelled.
template <typename F>
void parallelFor(std::size_t n, const std::atomic<bool>* cancel, const F& work) {
    std::atomic<std::size_t> next = 0;
    auto run = [&] {
        for (std::size_t i; (i = next++) < n;) {
            if (cancel != nullptr && cancel->load(std::memory_order_relaxed)) {
                return;
            }
            work(i);
        }
    };
    const unsigned threads = std::clamp(std::thread::hardware_concurrency() * 4, 4U, 16U);
    std::vector<std::thread> pool;
    for (unsigned t = 1; t < threads && t < n; ++t) {
        pool.emplace_back(run);
    }
    run();
    for (auto& t : pool) {
        t.join();
    }
}

// Hashes every item: the first 64 KiB (`limit`) or the whole file; near inodes first, which keeps
// a cold disk from seeking back and forth. Then sorted so that equal contents are neighbours.
void digestAll(std::vector<Work>& items, const Names& names, std::int64_t limit,
               const std::atomic<bool>* cancel, const std::function<void(std::int64_t)>& done) {
    std::sort(items.begin(), items.end(), [&](const Work& a, const Work& b) {
        return names[a.name]->inode < names[b.name]->inode;
    });
    parallelFor(items.size(), cancel, [&](std::size_t i) {
        Work& w = items[i];
        const DuplicateCandidate& c = *names[w.name];
        const auto digest = sha256OfFile(c.path().c_str(), limit, c.length);
        w.ok = digest.has_value();
        if (digest) {
            w.digest = *digest;
        }
        done(c.length);
    });
    std::sort(items.begin(), items.end(), [&](const Work& a, const Work& b) {
        const std::int64_t la = names[a.name]->length;
        const std::int64_t lb = names[b.name]->length;
        return la != lb ? la < lb : a.ok != b.ok ? a.ok : a.digest < b.digest;
    });
}

// Calls `run(first, last)` for every run of at least two hashed items with the same contents.
template <typename F>
void forEachMatch(const std::vector<Work>& items, const Names& names, const F& run) {
    for (std::size_t i = 0; i < items.size();) {
        std::size_t j = i + 1;
        while (j < items.size() && sameContents(items[i], items[j], names)) {
            ++j;
        }
        if (items[i].ok && j - i > 1) {
            run(i, j);
        }
        i = j;
    }
}

} // namespace

struct DuplicateSet::Storage {
    explicit Storage(std::size_t threads) : listings(threads) {}
    std::vector<Listing> listings; // one per walking thread; never resized, never moved
};

std::string DuplicateCandidate::path() const {
    return childPath(folder, name);
}

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

std::vector<CleanableItem>
DuplicateGroup::removals(const std::function<bool(const CleanableItem&)>& chosen) const {
    const CleanableItem* stays = nullptr;
    for (const CleanableItem& f : files) {
        if (!chosen(f)) {
            stays = &f;
            break;
        }
    }
    if (stays == nullptr && !files.empty()) {
        stays = &files.front();
    }
    std::vector<CleanableItem> out;
    for (const CleanableItem& f : files) {
        if (&f == stays || !chosen(f)) {
            continue;
        }
        CleanableItem item = f;
        if (stays->scanned) {
            item.keptCopy = KeptCopy{stays->path, *stays->scanned};
        }
        out.push_back(std::move(item));
    }
    return out;
}

std::optional<std::int64_t> duplicateThreshold(std::int64_t raw) {
    return std::find(kDuplicateThresholds.begin(), kDuplicateThresholds.end(), raw) !=
                   kDuplicateThresholds.end()
               ? std::optional(raw)
               : std::nullopt;
}

DuplicateGroup DuplicateSet::group(std::size_t i) const {
    const Group& group = groups_[i];
    DuplicateGroup g;
    g.id = hexDigest(group.digest);
    g.fileSize = group.length;
    g.files.reserve(group.count);
    g.freed.reserve(group.count);
    for (std::size_t k = group.first; k < group.first + group.count; ++k) {
        const Member& m = members_[k];
        const DuplicateCandidate& c = *names_[m.name];
        CleanableItem item;
        item.path = fileName::decode(c.path());
        item.size = c.allocated;
        // Dated or not, a file goes only while it is the one the search compared.
        item.scanned = FileSnapshot{c.inode, c.length, FileSnapshot::kUndated};
        if (c.dated()) {
            item.modified = QDateTime::fromSecsSinceEpoch(c.mtime, Qt::UTC);
            item.scanned->modifiedNs = c.mtime * 1'000'000'000LL + c.mtimeNs;
        }
        QStringList otherNames;
        for (std::uint32_t n = 1; n <= m.otherNames; ++n) {
            otherNames << fileName::decode(names_[m.name + n]->path());
        }
        item.detail = hardLinkNote(otherNames, c.links);
        g.files.push_back(std::move(item));
        g.freed.push_back(c.links > 1 ? 0 : c.allocated);
    }
    return g;
}

std::int64_t DuplicateSet::wastedBytes() const {
    std::int64_t sum = 0;
    for (const Group& g : groups_) {
        sum += g.wasted;
    }
    return sum;
}

std::optional<QString> DuplicateFinder::hash(const std::string& path,
                                             std::optional<std::int64_t> limit,
                                             std::optional<std::int64_t> expectedLength) {
    const auto digest = sha256OfFile(path.c_str(), limit.value_or(-1), expectedLength);
    return digest ? std::optional(hexDigest(*digest)) : std::nullopt;
}

std::vector<DuplicateGroup> DuplicateFinder::scan(const Options& options,
                                                  const Progress& onProgress,
                                                  const std::atomic<bool>* cancel) const {
    const DuplicateSet found = find(options, onProgress, cancel);
    std::vector<DuplicateGroup> groups;
    groups.reserve(found.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        groups.push_back(found.group(i));
    }
    return groups;
}

DuplicateSet DuplicateFinder::find(const Options& options, const Progress& onProgress,
                                   const std::atomic<bool>* cancel) const {
    const auto cancelled = [cancel] {
        return cancel != nullptr && cancel->load();
    };
    const SearchScope scope(options, home_);
    DuplicateSet set;
    if (scope.rootExcluded()) {
        return set;
    }
    FileWalk::Options walk;
    walk.cancel = cancel;
    walk.includeHidden = options.includeHidden;
    walk.statxMask = STATX_TYPE | STATX_BLOCKS | STATX_SIZE | STATX_MTIME | STATX_INO | STATX_NLINK;
    if (onProgress) {
        walk.progress = [&onProgress](std::int64_t n) {
            onProgress(QStringLiteral("Looking for files"), n, 0);
        };
    }
    walk.enter = [&scope](const std::string& parent, const char* name) {
        return scope.enters(parent, name);
    };
    auto storage = std::make_shared<DuplicateSet::Storage>(
        static_cast<std::size_t>(FileWalk::maximumThreads(walk)));
    const std::int64_t minimum = std::max<std::int64_t>(options.minimumSize, 1);
    walk.file = [&](int thread, const std::string& folder, const char* name,
                    const struct statx& sx) {
        const auto length = static_cast<std::int64_t>(sx.stx_size);
        if (length < minimum || !scope.offers(folder, name)) {
            return;
        }
        Listing& l = storage->listings[static_cast<std::size_t>(thread)];
        if (l.folder == nullptr || l.folderLength != folder.size() ||
            std::memcmp(l.folder, folder.data(), folder.size()) != 0) {
            l.folder = l.text.add(folder.data(), folder.size());
            l.folderLength = folder.size();
        }
        DuplicateCandidate& c = l.files.add();
        c.folder = l.folder;
        c.name = l.text.add(name, std::strlen(name));
        c.inode = sx.stx_ino;
        c.length = length;
        c.allocated = static_cast<std::int64_t>(sx.stx_blocks) * 512;
        if ((sx.stx_mask & STATX_MTIME) != 0) {
            c.mtime = sx.stx_mtime.tv_sec;
            c.mtimeNs = sx.stx_mtime.tv_nsec;
        }
        c.links = sx.stx_nlink;
    };
    FileWalk::run(scope.root(), walk);
    if (cancelled()) {
        return set;
    }

    // Stage 1: lengths shared by at least two files. The walk stays on one file system, so an
    // inode number is a file: names of one inode (hard links) are sorted next to each other and
    // counted as one file.
    Names& names = set.names_;
    std::size_t total = 0;
    for (const Listing& l : storage->listings) {
        total += l.files.size();
    }
    names.reserve(total);
    for (const Listing& l : storage->listings) {
        l.files.forEach([&names](const DuplicateCandidate& c) { names.push_back(&c); });
    }
    std::sort(names.begin(), names.end(),
              [](const DuplicateCandidate* a, const DuplicateCandidate* b) {
                  if (a->length != b->length) {
                      return a->length < b->length;
                  }
                  return a->inode != b->inode ? a->inode < b->inode : a->path() < b->path();
              });
    // One item per file of a length that several files share.
    const auto forEachSharedLength = [&names](const auto& use) {
        for (std::size_t i = 0; i < names.size();) {
            std::size_t end = i + 1;
            bool shared = false;
            for (; end < names.size() && names[end]->length == names[i]->length; ++end) {
                shared = shared || names[end]->inode != names[i]->inode;
            }
            if (shared) {
                use(i, end);
            }
            i = end;
        }
    };
    std::size_t count = 0;
    forEachSharedLength([&](std::size_t first, std::size_t last) {
        for (std::size_t k = first; k < last; ++k) {
            count += k == first || names[k]->inode != names[k - 1]->inode ? 1 : 0;
        }
    });
    std::vector<Work> heads;
    heads.reserve(count);
    forEachSharedLength([&](std::size_t first, std::size_t last) {
        for (std::size_t k = first; k < last;) {
            Work& w = heads.emplace_back();
            w.name = static_cast<std::uint32_t>(k);
            for (++k; k < last && names[k]->inode == names[w.name]->inode; ++k) {
                ++w.otherNames;
            }
        }
    });

    std::atomic<std::int64_t> compared = 0;
    auto toCompare = static_cast<std::int64_t>(heads.size());
    const auto report = [&](std::int64_t length) {
        const std::int64_t n = ++compared;
        // Often enough that one big file at a time still shows movement.
        if (onProgress && (n % 100 == 0 || length > kHead * 16)) {
            onProgress(QStringLiteral("Comparing files"), n, toCompare);
        }
    };
    // Stage 2: the first 64 KiB, which is the whole of a short file. Matching short files stay
    // in place at the front; longer ones go on to stage 3.
    digestAll(heads, names, kHead, cancel, report);
    std::vector<Work> whole;
    std::size_t kept = 0;
    forEachMatch(heads, names, [&](std::size_t first, std::size_t last) {
        if (names[heads[first].name]->length > kHead) {
            whole.insert(whole.end(), heads.begin() + static_cast<std::ptrdiff_t>(first),
                         heads.begin() + static_cast<std::ptrdiff_t>(last));
        } else {
            for (std::size_t k = first; k < last; ++k) {
                heads[kept++] = heads[k]; // kept <= first: only items already passed are written
            }
        }
    });
    heads.resize(kept);
    std::vector<Work>& matches = heads;
    // Stage 3: the whole file.
    toCompare += static_cast<std::int64_t>(whole.size());
    digestAll(whole, names, -1, cancel, report);
    if (cancelled()) {
        return {};
    }
    std::vector<std::pair<std::size_t, std::size_t>> runs;
    forEachMatch(matches, names,
                 [&](std::size_t first, std::size_t last) { runs.emplace_back(first, last); });
    const std::size_t shortRuns = runs.size();
    forEachMatch(whole, names,
                 [&](std::size_t first, std::size_t last) { runs.emplace_back(first, last); });

    std::size_t members = 0;
    for (const auto& [first, last] : runs) {
        members += last - first;
    }
    set.members_.reserve(members);
    set.groups_.reserve(runs.size());
    for (std::size_t r = 0; r < runs.size(); ++r) {
        std::vector<Work>& from = r < shortRuns ? matches : whole;
        const auto first = from.begin() + static_cast<std::ptrdiff_t>(runs[r].first);
        const auto last = from.begin() + static_cast<std::ptrdiff_t>(runs[r].second);
        orderOldestFirst(first, last, names);
        DuplicateSet::Group g;
        g.digest = first->digest;
        g.length = names[first->name]->length;
        g.first = set.members_.size();
        g.count = static_cast<std::uint32_t>(last - first);
        for (auto w = first; w != last; ++w) {
            set.members_.push_back({w->name, w->otherNames});
            // Removing a name of a file with other names frees nothing.
            if (w != first && names[w->name]->links == 1) {
                g.wasted += names[w->name]->allocated;
            }
        }
        set.groups_.push_back(g);
    }
    std::sort(set.groups_.begin(), set.groups_.end(),
              [](const DuplicateSet::Group& a, const DuplicateSet::Group& b) {
                  if (a.wasted != b.wasted) {
                      return a.wasted > b.wasted;
                  }
                  return a.length != b.length ? a.length > b.length : a.digest < b.digest;
              });
    set.storage_ = std::move(storage);
    return set;
}

} // namespace tarvik
