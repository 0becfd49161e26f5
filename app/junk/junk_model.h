#pragma once

#include "app/cleanup/cleanup_model.h"
#include "core/cleanup/junk_scanner.h"

#include <QSet>
#include <functional>

namespace tarvik {

class Preferences;

// System Junk's state: the scan as it fills in category by category, what is selected, and the
// clean (the shared removal, with the Trash always deleted for good).
class JunkModel : public CleanupModel {
    Q_OBJECT
public:
    struct Dependencies {
        std::function<JunkScanner::Options()> scannerOptions;
        std::function<Cleaner()> cleaner;
        QString timelinePath;
    };
    static Dependencies forCurrentUser(const Preferences& preferences);

    JunkModel(Preferences& preferences, Dependencies dependencies, QObject* parent = nullptr);
    ~JunkModel() override;

    const std::vector<JunkScanResult>& results() const { return results_; }
    const JunkScanner::Options& scannerOptions() const { return options_; }

    bool isSelected(const QString& itemId) const { return selected_.contains(itemId); }
    // Every item of the category is selected (and it has some).
    bool isCategorySelected(JunkCategory category) const;
    void setCategorySelected(JunkCategory category, bool on);
    void setItemSelected(const QString& itemId, bool on);
    int selectedCount() const override;
    std::int64_t selectedSize() const override;
    std::vector<CleanupGroup> chosenGroups() const override;
    // The junk mode of the settings; the Trash category is deleted whatever it says.
    RemovalMode removalMode() const override;

public slots:
    void scan();

signals:
    // A category arrived, or a clean left fewer items.
    void resultsChanged();

private:
    const JunkScanResult* resultFor(JunkCategory category) const;
    void cancelScan() override { scan_.cancel(); }
    void dropRemoved(const QSet<QString>& removedIds) override;
    // Takes the results so far, selecting the default categories as they first appear.
    void take(std::vector<JunkScanResult> results);

    std::function<JunkScanner::Options()> scannerOptionsFor_;
    JunkScanner::Options options_;
    std::vector<JunkScanResult> results_;
    QSet<QString> selected_;
    using Results = std::vector<JunkScanResult>;
    BackgroundJob<Results, Results> scan_;
};

} // namespace tarvik
