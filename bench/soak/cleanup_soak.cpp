// Many cleanups of small random trees through the one removal path, as the file screens run
// them: a search finds the files, some files, folders and links are chosen, and the cleaner
// (guard, exclusions, Trash) removes them in a Trash group and a delete group. Some rounds
// spoil a chosen item on purpose (gone, changed since the search, outside home, home itself,
// an excluded file inside a chosen folder). Every round checks that exactly the spoiled items
// failed, each with its own reason, that everything else chosen is gone and nothing else is;
// the process's resident memory and open descriptors are compared between the end of the
// warm-up and the end.
//
// usage: tarvik_soak_cleanup [rounds] [seed]   (10000 rounds; seed 1)

#include "bench/soak/process_use.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/large_file_scanner.h"
#include "core/sys/file_names.h"

#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace tarvik;

constexpr int kWarmUpRounds = 100;
// Growth allowed between the end of the warm-up and the end: the allocator's own slack, far
// below what a leak of a few dozen bytes a round would add over 10,000 rounds.
constexpr std::int64_t kResidentBoundKiB = 512;

bool exists(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0;
}

QString qpath(const std::string& path) {
    return fileName::decode(path);
}

class Round {
public:
    Round(std::mt19937& random, std::string home, std::string outside)
        : random_(random), home_(std::move(home)), outside_(std::move(outside)),
          root_(home_ + "/tree") {}

    struct Outcome {
        int wrong = 0; // things that went other than expected, each told on stderr
        int removed = 0;
        int failed = 0;
    };
    Outcome run(int number) {
        number_ = number;
        build();
        search();
        choose();
        spoil();
        remove();
        const int wrong = check();
        std::error_code ec;
        fs::remove_all(root_, ec);
        fs::remove_all(home_ + "/.local/share/Trash", ec);
        return {wrong, int(report_.removed.size()), int(report_.failures.size())};
    }

private:
    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    bool chance(double p) { return std::bernoulli_distribution(p)(random_); }

    std::string name() {
        // Odd names too: spaces, other scripts, a leading dot, bytes that are not UTF-8.
        static const char* kNames[] = {"plain",      "with space",  "ünïcode", ".hidden",
                                       "semi;colon", "raw\xff\xfe", "tab\tin", "dash-"};
        return std::string(kNames[pick(0, 7)]) + std::to_string(serial_++);
    }

    void build() {
        folders_ = {root_};
        fs::create_directories(root_);
        for (int i = pick(1, 6); i > 0; --i) {
            const std::string folder = folders_[pick(0, int(folders_.size()) - 1)] + "/" + name();
            fs::create_directory(folder);
            folders_.push_back(folder);
        }
        for (int i = pick(2, 16); i > 0; --i) {
            const std::string file = folders_[pick(0, int(folders_.size()) - 1)] + "/" + name();
            std::ofstream(file, std::ios::binary) << std::string(pick(0, 65536), 'x');
            files_.push_back(file);
        }
        for (int i = pick(0, 3); i > 0; --i) {
            const std::string link = folders_[pick(0, int(folders_.size()) - 1)] + "/" + name();
            // Out of home, or to a file of the tree: either way the link goes, its target stays.
            const std::string target =
                chance(0.5) ? outside_ + "/sentinel" : files_[pick(0, int(files_.size()) - 1)];
            fs::create_symlink(target, link);
            links_.push_back(link);
        }
    }

    void search() {
        LargeFileScanner::Options o;
        o.root = qpath(root_);
        o.includeHidden = true;
        found_ = LargeFileScanner(qpath(home_)).scan(o);
    }

    bool underChosenFolder(const std::string& path) const {
        return std::any_of(chosenFolders_.begin(), chosenFolders_.end(), [&](const auto& f) {
            return path.size() > f.size() && path.compare(0, f.size(), f) == 0 &&
                   path[f.size()] == '/';
        });
    }

    void choose() {
        for (std::size_t i = 1; i < folders_.size(); ++i) {
            if (chance(0.2) && !underChosenFolder(folders_[i])) {
                chosenFolders_.push_back(folders_[i]);
                items_.push_back({qpath(folders_[i]), 0, std::nullopt, std::nullopt});
            }
        }
        for (const FoundFile& f : found_) {
            if (chance(0.6) && !underChosenFolder(fileName::encode(f.item.path))) {
                items_.push_back(f.item);
            }
        }
        for (const std::string& link : links_) {
            if (chance(0.5) && !underChosenFolder(link)) {
                items_.push_back({qpath(link), 0, std::nullopt, std::nullopt});
            }
        }
        std::shuffle(items_.begin(), items_.end(), random_);
    }

    // A chosen file found by the search, if any.
    const CleanableItem* chosenFile() {
        std::vector<const CleanableItem*> files;
        for (const CleanableItem& i : items_) {
            if (i.scanned && !spoiled_.contains(i.path)) {
                files.push_back(&i);
            }
        }
        return files.empty() ? nullptr : files[pick(0, int(files.size()) - 1)];
    }

    void spoil() {
        if (chance(0.3)) {
            if (const CleanableItem* gone = chosenFile()) {
                fs::remove(fileName::encode(gone->path));
                spoiled_[gone->path] = "No such file or directory.";
            }
        }
        if (chance(0.3)) {
            if (const CleanableItem* changed = chosenFile()) {
                std::ofstream(fileName::encode(changed->path), std::ios::app) << "more";
                spoiled_[changed->path] = "changed since the search and was left as it is.";
                kept_.push_back(fileName::encode(changed->path));
            }
        }
        if (chance(0.2)) {
            const QString sentinel = qpath(outside_ + "/sentinel");
            items_.push_back({sentinel, 0, std::nullopt, std::nullopt});
            spoiled_[sentinel] = "is outside the locations Tarvik is allowed to clean.";
        }
        if (chance(0.1)) {
            items_.push_back({qpath(home_), 0, std::nullopt, std::nullopt});
            spoiled_[qpath(home_)] = "is a protected location and was skipped.";
        }
        if (chance(0.3)) {
            for (const std::string& folder : chosenFolders_) {
                const std::string keep = folder + "/" + name();
                std::ofstream(keep) << "keep";
                excluded_ = qpath(keep);
                spoiled_[qpath(folder)] = "which you excluded";
                kept_.push_back(keep);
                break;
            }
        }
    }

    void remove() {
        std::vector<CleanupGroup> groups = {{{}, RemovalMode::MoveToTrash},
                                            {{}, RemovalMode::DeletePermanently}};
        for (const CleanableItem& i : items_) {
            groups[chance(0.5) ? 0 : 1].items.push_back(i);
        }
        const Cleaner cleaner =
            Cleaner(SafetyGuard(qpath(home_), {}), Trash(qpath(home_ + "/.local/share/Trash")))
                .withExclusions(ExclusionList(
                    excluded_.isEmpty() ? QStringList() : QStringList{excluded_}, qpath(home_)))
                .startingAlsoAt(qpath(root_));
        report_ = runCleanup(cleaner, groups, QStringLiteral("soak"), {}, nullptr, nullptr);
    }

    int check() {
        int wrong = 0;
        const auto tell = [&](const QString& what, const QString& path) {
            std::fprintf(stderr, "round %d: %s: %s\n", number_, qPrintable(what),
                         qPrintable(fileName::display(path)));
            ++wrong;
        };
        std::set<QString> failed;
        for (const CleanFailure& f : report_.failures) {
            failed.insert(f.item.path);
            const auto it = spoiled_.find(f.item.path);
            if (it == spoiled_.end()) {
                tell("failed though nothing was wrong with it (" + f.message + ")", f.item.path);
            } else if (!f.message.contains(it->second)) {
                tell("failed for another reason than its own (" + f.message + ")", f.item.path);
            }
        }
        for (const auto& [path, reason] : spoiled_) {
            if (!failed.contains(path)) {
                tell("was spoiled and did not fail", path);
            }
        }
        const QSet<QString> removed = report_.removedIDs();
        std::set<std::string> gone;
        for (const CleanableItem& i : items_) {
            if (spoiled_.contains(i.path)) {
                continue;
            }
            if (!removed.contains(i.path)) {
                tell("was neither removed nor failed", i.path);
            }
            gone.insert(fileName::encode(i.path));
        }
        if (removed.size() + int(report_.failures.size()) != int(items_.size())) {
            tell(QStringLiteral("reported %1 removed and %2 failed of %3 items")
                     .arg(removed.size())
                     .arg(report_.failures.size())
                     .arg(items_.size()),
                 qpath(root_));
        }
        // What was chosen and removed is gone; what was kept on purpose and everything not
        // chosen is still there.
        for (const std::string& path : gone) {
            if (exists(path)) {
                tell("is still there after its removal", qpath(path));
            }
        }
        for (const std::string& path : kept_) {
            if (!exists(path)) {
                tell("was removed though it had to stay", qpath(path));
            }
        }
        std::vector<std::string> everything = files_;
        everything.insert(everything.end(), links_.begin(), links_.end());
        everything.insert(everything.end(), folders_.begin(), folders_.end());
        for (const std::string& path : everything) {
            if (!gone.contains(path) && !underChosenFolder(path) &&
                !spoiled_.contains(qpath(path)) && !exists(path)) {
                tell("was removed though it was not chosen", qpath(path));
            }
        }
        return wrong;
    }

    std::mt19937& random_;
    const std::string home_;
    const std::string outside_;
    const std::string root_;
    int number_ = 0;
    int serial_ = 0;
    std::vector<std::string> folders_;
    std::vector<std::string> files_;
    std::vector<std::string> links_;
    std::vector<FoundFile> found_;
    std::vector<std::string> chosenFolders_;
    std::vector<CleanableItem> items_;
    std::map<QString, QString> spoiled_; // the item, and words its failure must contain
    std::vector<std::string> kept_;
    QString excluded_;
    CleanReport report_;
};

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 10'000;
    const unsigned seed = argc > 2 ? unsigned(std::atoi(argv[2])) : 1u;
    QTemporaryDir sandbox;
    const std::string base = fileName::encode(QDir(sandbox.path()).canonicalPath());
    const std::string home = base + "/home";
    const std::string outside = base + "/outside";
    fs::create_directories(home);
    fs::create_directories(outside);
    std::ofstream(outside + "/sentinel") << "precious";

    std::mt19937 random(seed);
    int wrong = 0;
    int removed = 0;
    int failed = 0;
    const int warmUp = std::min(kWarmUpRounds, rounds);
    std::int64_t residentAtStart = 0;
    int descriptorsAtStart = 0;
    soak::printHeader();
    for (int r = 1; r <= rounds; ++r) {
        const auto outcome = Round(random, home, outside).run(r);
        wrong += outcome.wrong;
        removed += outcome.removed;
        failed += outcome.failed;
        if (r == warmUp || r % 1000 == 0 || r == rounds) {
            soak::printRow(r);
        }
        if (r == warmUp) {
            residentAtStart = soak::residentKiB();
            descriptorsAtStart = soak::openDescriptors();
        }
    }
    std::string kept;
    std::ifstream(outside + "/sentinel") >> kept;
    const bool sentinelKept = kept == "precious";
    const std::int64_t grown = soak::residentKiB() - residentAtStart;
    const int opened = soak::openDescriptors() - descriptorsAtStart;
    const bool pass = wrong == 0 && sentinelKept && grown <= kResidentBoundKiB && opened <= 0;
    std::printf("# %d rounds, seed %u: %d items removed, %d failed each for its own reason, %d "
                "unexpected outcomes; outside sentinel %s; resident memory %+lld KiB and "
                "descriptors %+d from round %d to the end (bounds: %lld KiB, none more): %s\n",
                rounds, seed, removed, failed, wrong, sentinelKept ? "intact" : "TOUCHED",
                static_cast<long long>(grown), opened, warmUp,
                static_cast<long long>(kResidentBoundKiB), pass ? "PASS" : "FAIL");
    return pass ? 0 : 1;
}
