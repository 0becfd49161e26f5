#pragma once

#include "app/cleanup/cleanup_model.h"
#include "core/cleanup/duplicate_finder.h"

#include <QHash>
#include <utility>

namespace tarvik {

// Duplicates: the groups of identical files (never with a file the user excluded), which
// copies are chosen for removal, and the removal. Every copy but the original starts chosen;
// the user may choose differently, but never every file of a group: one always stays.
class DuplicatesModel : public CleanupModel {
    Q_OBJECT
public:
    DuplicatesModel(Preferences& preferences, Dependencies dependencies, QObject* parent = nullptr);
    ~DuplicatesModel() override;

    // Largest waste first; each group's oldest file first.
    const std::vector<DuplicateGroup>& groups() const { return groups_; }
    const FileSearchOptions& lastOptions() const { return lastOptions_; }
    std::int64_t totalWaste() const;

    bool isSelected(const QString& path) const { return selected_.contains(path); }
    // Chooses a file or leaves it; false, and nothing changes, when choosing it would leave
    // its group without a file to keep.
    bool setSelected(const QString& path, bool on);
    // On: every copy of the group but its original. Off: none.
    void setGroupSelected(const QString& groupId, bool on);
    int selectedCount(const DuplicateGroup& group) const;
    void selectDefault(); // every copy but the originals
    void selectNone();
    int selectedCount() const override { return static_cast<int>(selected_.size()); }
    // What removing the chosen files frees: nothing for a name with other hard links.
    std::int64_t selectedSize() const override;
    // Each chosen copy goes only while a copy that stays is still as the search found it.
    std::vector<CleanupGroup> chosenGroups() const override;
    RemovalMode removalMode() const override;

    // Searches `options.root`, the home folder when empty.
    void scan(FileSearchOptions options);

signals:
    // The groups were replaced or changed by a removal.
    void groupsChanged();
    // A choice was turned down to keep a file of the group; the view puts its check back.
    void selectionRefused(const QString& path);

private:
    void cancelScan() override { scan_.cancel(); }
    void dropRemoved(const QSet<QString>& removedIds) override;
    void reindex();
    const DuplicateGroup* groupOf(const QString& path) const;

    std::vector<DuplicateGroup> groups_;
    QHash<QString, std::size_t> groupIndex_; // path → index in groups_
    QSet<QString> selected_;
    FileSearchOptions lastOptions_;
    struct Phase {
        QString phase;
        std::int64_t count = 0;
        std::int64_t total = 0;
    };
    BackgroundJob<std::vector<DuplicateGroup>, Phase> scan_;
};

} // namespace tarvik
