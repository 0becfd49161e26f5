#include "app/files/duplicates_model.h"

#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"

namespace tarvik {

DuplicatesModel::DuplicatesModel(Preferences& preferences, Dependencies dependencies,
                                 QObject* parent)
    : CleanupModel(preferences, std::move(dependencies), QStringLiteral("Duplicates"), parent),
      scan_(
          this, [this](const Phase& p) { emit scanProgress(p.phase, p.count, p.total); },
          [this](std::vector<DuplicateGroup> found) {
              // Groups from a stopped comparison are incomplete, and a file wrongly kept out of a
              // group would turn its copy into an "original": nothing is shown.
              groups_ = scan_.wasCancelled() ? std::vector<DuplicateGroup>{} : std::move(found);
              reindex();
              selectDefault();
              emit groupsChanged();
              scanEnded(scan_.wasCancelled());
          }) {}

DuplicatesModel::~DuplicatesModel() = default;

RemovalMode DuplicatesModel::removalMode() const {
    return CapabilitySettings::removalMode(preferences(), pref::kFileRemovalMode);
}

std::int64_t DuplicatesModel::totalWaste() const {
    std::int64_t n = 0;
    for (const auto& g : groups_) {
        n += g.wastedBytes();
    }
    return n;
}

const DuplicateGroup* DuplicatesModel::groupOf(const QString& path) const {
    const auto it = groupIndex_.constFind(path);
    return it == groupIndex_.cend() ? nullptr : &groups_[*it];
}

int DuplicatesModel::selectedCount(const DuplicateGroup& group) const {
    int n = 0;
    for (const auto& f : group.files) {
        n += selected_.contains(f.id()) ? 1 : 0;
    }
    return n;
}

bool DuplicatesModel::setSelected(const QString& path, bool on) {
    const DuplicateGroup* g = groupOf(path);
    if (g == nullptr) {
        return false;
    }
    if (on == selected_.contains(path)) {
        return true;
    }
    if (on && selectedCount(*g) + 1 >= static_cast<int>(g->files.size())) {
        emit selectionRefused(path);
        return false;
    }
    if (on) {
        selected_.insert(path);
    } else {
        selected_.remove(path);
    }
    emit selectionChanged();
    return true;
}

void DuplicatesModel::setGroupSelected(const QString& groupId, bool on) {
    for (const auto& g : groups_) {
        if (g.id != groupId) {
            continue;
        }
        for (std::size_t i = 0; i < g.files.size(); ++i) {
            // The original is never among them, so one file always stays.
            if (on && i > 0) {
                selected_.insert(g.files[i].id());
            } else {
                selected_.remove(g.files[i].id());
            }
        }
        emit selectionChanged();
        return;
    }
}

void DuplicatesModel::selectDefault() {
    selected_.clear();
    for (const auto& g : groups_) {
        for (std::size_t i = 1; i < g.files.size(); ++i) {
            selected_.insert(g.files[i].id());
        }
    }
    emit selectionChanged();
}

void DuplicatesModel::selectNone() {
    selected_.clear();
    emit selectionChanged();
}

std::int64_t DuplicatesModel::selectedSize() const {
    std::int64_t n = 0;
    for (const auto& g : groups_) {
        for (std::size_t i = 0; i < g.files.size(); ++i) {
            n += selected_.contains(g.files[i].id()) ? g.freed[i] : 0;
        }
    }
    return n;
}

void DuplicatesModel::reindex() {
    groupIndex_.clear();
    for (std::size_t gi = 0; gi < groups_.size(); ++gi) {
        for (const auto& f : groups_[gi].files) {
            groupIndex_.insert(f.id(), gi);
        }
    }
}

void DuplicatesModel::scan(FileSearchOptions options) {
    if (isBusy()) {
        return;
    }
    if (options.root.isEmpty()) {
        options.root = home();
    }
    lastOptions_ = options;
    groups_.clear();
    reindex();
    selected_.clear();
    scanStarting(options.root);
    emit groupsChanged();
    emit selectionChanged();
    // An excluded file is neither offered nor kept as an original.
    options.excluded = exclusions().forMatching();
    scan_.start([options, home = home()](JobContext<Phase>& job) {
        return DuplicateFinder(home).scan(
            options,
            [&job](const QString& phase, std::int64_t n, std::int64_t total) {
                job.report({phase, n, total});
            },
            job.cancelFlag());
    });
}

std::vector<CleanupGroup> DuplicatesModel::chosenGroups() const {
    CleanupGroup group{{}, removalMode()};
    for (const auto& g : groups_) {
        const auto chosen =
            g.removals([this](const CleanableItem& f) { return selected_.contains(f.id()); });
        group.items.insert(group.items.end(), chosen.begin(), chosen.end());
    }
    return {group};
}

void DuplicatesModel::dropRemoved(const QSet<QString>& removedIds) {
    std::vector<DuplicateGroup> left;
    for (const auto& g : groups_) {
        DuplicateGroup kept =
            g.keeping([&](const CleanableItem& i) { return !removedIds.contains(i.id()); });
        // A file left alone is no longer a duplicate of anything.
        if (kept.files.size() > 1) {
            left.push_back(std::move(kept));
        }
    }
    groups_ = std::move(left);
    reindex();
    selected_.subtract(removedIds);
    // Chosen files of groups that disappeared are no longer offered.
    for (auto it = selected_.begin(); it != selected_.end();) {
        it = groupIndex_.contains(*it) ? std::next(it) : selected_.erase(it);
    }
    emit groupsChanged();
}

} // namespace tarvik
