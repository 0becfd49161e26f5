#pragma once

#include "app/shell/background_job.h"
#include "core/cleanup/cleaner.h"
#include "core/cleanup/cleanup_run.h"
#include "core/cleanup/exclusion_list.h"

#include <QObject>
#include <QSet>
#include <functional>
#include <optional>

namespace tarvik {

class Preferences;

// What every cleanup screen's model shares: the home it works in, whether a search runs and how
// far it got, the removal of what the user chose through the guarded cleaner with its progress,
// and the report. Each screen's model adds its own search and selection.
class CleanupModel : public QObject {
    Q_OBJECT
public:
    struct Dependencies {
        QString home;
        std::function<Cleaner()> cleaner;
        QString timelinePath; // empty keeps no record of the cleanup
    };
    static Dependencies forCurrentUser();

    const QString& home() const { return deps_.home; }
    bool isScanning() const { return scanning_; }
    bool isRemoving() const { return removal_.isRunning(); }
    bool isBusy() const { return scanning_ || isRemoving(); }
    // The last search was stopped by the user before it ended.
    bool wasCancelled() const { return cancelled_; }
    // A search has ended at least once, finished or cancelled.
    bool hasScanned() const { return scanned_; }
    const std::optional<CleanReport>& lastReport() const { return report_; }

    virtual int selectedCount() const = 0;
    virtual std::int64_t selectedSize() const = 0;
    // What removing the selection would remove, each group with its mode.
    virtual std::vector<CleanupGroup> chosenGroups() const = 0;
    // How the selection goes, as the settings say.
    virtual RemovalMode removalMode() const = 0;

public slots:
    // Removes the selection, the user having agreed.
    void removeSelected();
    // Stops the search or the removal under way; what was removed stays removed.
    void cancel();

signals:
    void scanStarted();
    // `phase` names what the search does ("Looking for files"), `count` how far it got and
    // `total` how far it goes (0 while not known).
    void scanProgress(const QString& phase, qint64 count, qint64 total);
    void scanFinished();
    void selectionChanged();
    void removeProgress(double fraction);
    void removeFinished();

protected:
    CleanupModel(Preferences& preferences, Dependencies dependencies, QString source,
                 QObject* parent);

    Preferences& preferences() const { return prefs_; }
    ExclusionList exclusions() const;
    // Called by subclasses around their own search of `root`.
    void scanStarting(const QString& root);
    void scanEnded(bool cancelled);
    virtual void cancelScan() = 0;
    // The removal ended: subclasses drop what is gone.
    virtual void dropRemoved(const QSet<QString>& removedIds) = 0;

private:
    Preferences& prefs_;
    Dependencies deps_;
    QString source_;
    bool scanning_ = false;
    bool cancelled_ = false;
    bool scanned_ = false;
    std::optional<CleanReport> report_;
    QString root_; // of the last search: removals may start there when it is a disk of its own
    BackgroundJob<CleanReport> removal_;
};

} // namespace tarvik
