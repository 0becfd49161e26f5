#pragma once

#include "core/cleanup/cleaner.h"
#include "core/cleanup/junk_scanner.h"

#include <QFutureWatcher>
#include <QObject>
#include <QSet>
#include <atomic>
#include <functional>
#include <memory>

namespace tarvik {

class Preferences;

// System Junk's state: the scan as it fills in category by category, what is selected, the
// clean with its progress, and the last report. Scans and cleans run off the interface thread.
class JunkModel : public QObject {
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

    bool isScanning() const { return scanning_; }
    bool isCleaning() const { return cleaning_; }
    const std::vector<JunkScanResult>& results() const { return results_; }
    const std::optional<CleanReport>& lastReport() const { return report_; }

    bool isSelected(const QString& itemId) const { return selected_.contains(itemId); }
    // Every item of the category is selected (and it has some).
    bool isCategorySelected(JunkCategory category) const;
    void setCategorySelected(JunkCategory category, bool on);
    void setItemSelected(const QString& itemId, bool on);
    int selectedCount() const;
    std::int64_t selectedSize() const;
    // How the selected items will be removed: the junk mode, Trash always for good.
    RemovalMode junkMode() const;

public slots:
    void scan();
    void cancel();
    void clean();

signals:
    void scanStarted();
    void categoryScanned(tarvik::JunkCategory category);
    void scanFinished();
    void selectionChanged();
    void cleanProgress(double fraction);
    void cleanFinished();

private:
    const JunkScanResult* resultFor(JunkCategory category) const;

    Preferences& prefs_;
    Dependencies deps_;
    std::shared_ptr<std::atomic<bool>> cancel_;
    bool scanning_ = false;
    bool cleaning_ = false;
    std::vector<JunkScanResult> results_;
    QSet<QString> selected_;
    std::optional<CleanReport> report_;
    QFutureWatcher<void> scanWatcher_;
    QFutureWatcher<CleanReport> cleanWatcher_;
};

} // namespace tarvik
