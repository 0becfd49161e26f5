#include "core/cleanup/directory_sizer.h"

#include "core/cleanup/file_walk.h"

#include <QFile>
#include <algorithm>
#include <sys/stat.h>
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
    std::vector<Linked> linked;
};

SizeResult total(std::vector<Tally>& tallies) {
    SizeResult r;
    std::vector<Linked> linked;
    for (auto& t : tallies) {
        r.allocated += t.bytes;
        r.releasable += t.bytes;
        r.files += t.files;
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
    FileWalk::Options o;
    o.threads = threads_;
    o.cancel = cancel_;
    std::vector<Tally> tallies(static_cast<std::size_t>(FileWalk::maximumThreads(o)));
    o.file = [&tallies, dev = st.st_dev](int thread, const std::string&, const char*,
                                         const struct statx& sx) {
        Tally& t = tallies[static_cast<std::size_t>(thread)];
        const auto bytes = static_cast<std::int64_t>(sx.stx_blocks) * 512;
        ++t.files;
        if (sx.stx_nlink > 1) {
            t.linked.push_back({dev, static_cast<ino_t>(sx.stx_ino), sx.stx_nlink, bytes});
        } else {
            t.bytes += bytes;
        }
    };
    const FileWalk::Totals walked = FileWalk::run(path, o);
    SizeResult result = total(tallies);
    result.unreadable = walked.unreadable;
    result.otherFileSystems = walked.otherFileSystems;
    return result;
}

} // namespace tarvik
