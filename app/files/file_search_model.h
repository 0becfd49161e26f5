#pragma once

#include "core/cleanup/cleaner.h"
#include "core/cleanup/exclusion_list.h"

#include <QFutureWatcher>
#include <QObject>
#include <QSet>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace tarvik {

class Preferences;

// What Large & Old Files and Duplicates have in common: the home they search, the removal of
// what the user chose through the guarded cleaner, its progress and its report. Each screen's
// model adds its own search on top.
class FileSearchModel : public QObject {
    Q_OBJECT
public:
    struct Dependencies {
        QString home;
        std::function<Cleaner()> cleaner;
        QString timelinePath; // empty keeps no record of the cleanup
    };
    static Dependencies forCurrentUser();

    ~FileSearchModel() override;

    const QString& home() const { return deps_.home; }
    bool isScanning() const { return scanning_; }
    bool isRemoving() const { return removing_; }
    bool isBusy() const { return scanning_ || removing_; }
    // The last scan was stopped by the user before it ended.
    bool wasCancelled() const { return cancelled_; }
    // A scan has ended at least once, finished or cancelled.
    bool hasScanned() const { return scanned_; }
    const std::optional<CleanReport>& lastReport() const { return report_; }
    // From the preference "fileRemovalMode": Trash unless the user chose otherwise.
    RemovalMode removalMode() const;

public slots:
    // Stops the scan or the removal under way; what was removed stays removed.
    void cancel();

signals:
    void scanStarted();
    // `phase` names what the search does ("Looking for files"), `count` how far it got.
    void scanProgress(const QString& phase, qint64 count);
    void scanFinished();
    void selectionChanged();
    void removeProgress(double fraction);
    void removeFinished();

protected:
    FileSearchModel(Preferences& preferences, Dependencies dependencies, QObject* parent);

    // Called by subclasses around their own scan of `root`.
    std::shared_ptr<std::atomic<bool>> beginScan(const QString& root);
    void endScan();
    ExclusionList exclusions() const;
    // Passes the search's progress, from any thread, to the interface thread.
    void postProgress(const QString& phase, std::int64_t count);
    // Removes the items with the chosen mode on a worker thread; `source` names the screen in
    // the free-space history.
    void startRemoval(std::vector<CleanableItem> items, const QString& source);
    // The removal ended: subclasses drop what is gone.
    virtual void dropRemoved(const QSet<QString>& removedIds) = 0;

private:
    Preferences& prefs_;
    Dependencies deps_;
    std::shared_ptr<std::atomic<bool>> cancel_;
    bool scanning_ = false;
    bool removing_ = false;
    bool cancelled_ = false;
    bool scanned_ = false;
    std::optional<CleanReport> report_;
    QString root_; // of the last search: removals may start there when it is a disk of its own
    QFutureWatcher<CleanReport> removeWatcher_;
};

} // namespace tarvik
