#pragma once

#include "app/cleanup/cleanup_model.h"
#include "core/cleanup/large_file_scanner.h"

namespace tarvik {

// Large & Old Files: the search with its progress, what it found (never anything the user
// excluded), what is selected, and the removal of the selection. Nothing is selected by
// default: a large file is not junk until the user says so.
class LargeFilesModel : public CleanupModel {
    Q_OBJECT
public:
    LargeFilesModel(Preferences& preferences, Dependencies dependencies, QObject* parent = nullptr);
    ~LargeFilesModel() override;

    // Largest first.
    const std::vector<FoundFile>& results() const { return results_; }
    // The options of the last scan, with the root filled in.
    const LargeFileScanner::Options& lastOptions() const { return lastOptions_; }
    int count(FileKind kind) const;

    bool isSelected(const QString& path) const { return selected_.contains(path); }
    void setSelected(const QString& path, bool on);
    void setAllSelected(bool on);
    int selectedCount() const override;
    std::int64_t selectedSize() const override;
    std::vector<CleanupGroup> chosenGroups() const override;
    // From the preference "fileRemovalMode": Trash unless the user chose otherwise.
    RemovalMode removalMode() const override;
    std::int64_t totalSize() const;

    // Searches `options.root`, the home folder when empty.
    void scan(LargeFileScanner::Options options);

signals:
    // The list of results was replaced or shortened.
    void resultsChanged();

private:
    void cancelScan() override { scan_.cancel(); }
    void dropRemoved(const QSet<QString>& removedIds) override;

    std::vector<FoundFile> results_;
    QSet<QString> selected_;
    LargeFileScanner::Options lastOptions_;
    BackgroundJob<std::vector<FoundFile>, std::int64_t> scan_;
};

} // namespace tarvik
