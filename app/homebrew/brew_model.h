#pragma once

#include "app/shell/background_job.h"
#include "core/homebrew/brew_log.h"
#include "core/homebrew/brew_package.h"
#include "core/homebrew/brew_runner.h"
#include "core/homebrew/brew_service.h"
#include "core/homebrew/brew_updates.h"

#include <QObject>
#include <functional>
#include <memory>
#include <optional>

namespace tarvik {

class Preferences;

// The Homebrew section's state: what is installed, the command running now with its live log
// and progress, and the last failure explained. Every brew command runs off the interface
// thread through the one runner.
class BrewModel : public QObject {
    Q_OBJECT
public:
    BrewModel(Preferences& preferences, std::shared_ptr<BrewRunner> runner,
              QObject* parent = nullptr);
    ~BrewModel() override;

    bool isLoading() const { return loadJob_.isRunning(); }
    bool isRunning() const { return runJob_.isRunning(); }
    bool isNotInstalled() const { return notInstalled_; }
    const std::optional<BrewSnapshot>& snapshot() const { return snapshot_; }
    const std::optional<BrewEnvironment>& environment() const { return environment_; }
    const QString& loadError() const { return loadError_; }
    const std::optional<BrewRunner::BusyInfo>& busy() const { return busy_; }
    const QList<BrewLogLine>& log() const { return log_; }
    const BrewProgressTracker::Update& progress() const { return progress_; }
    const std::optional<BrewFailure>& failure() const { return failure_; }
    const QString& runningTitle() const { return title_; }
    bool greedy() const;

public slots:
    void load();
    void upgrade(const QStringList& names); // empty: everything outdated
    void install(const QString& name, tarvik::BrewPackageKind kind);
    void uninstall(const QString& name, tarvik::BrewPackageKind kind, bool force);
    void unpin(const QString& name);
    void doctor();
    void cleanupPreview();
    void orphanPreview();
    void cleanup();
    void cancel();
    void retry();
    // Searches Homebrew's catalogue; the answer arrives as searchFinished.
    void search(const QString& query);

signals:
    void changed();
    void logLine(const tarvik::BrewLogLine& line);
    void progressChanged();
    void commandFinished(bool succeeded);
    void searchFinished(const QString& query, const QStringList& formulae, const QStringList& casks,
                        const QString& error);

private:
    struct Command {
        QString title;
        QString displayName;
        QStringList arguments;
        QMap<QString, QString> environment;
        bool reloadAfter = true;
    };
    void start(Command command);

    struct Loaded {
        std::optional<BrewSnapshot> snapshot;
        std::optional<BrewEnvironment> environment;
        QString error;
        bool missing = false;
    };
    // What a command has said since the last delivery, and whether another brew holds the locks.
    struct RunProgress {
        std::vector<BrewLogLine> lines;
        std::optional<BrewRunner::BusyInfo> busy;
        bool busyKnown = false;
    };
    struct Ran {
        bool ok = false;
        std::optional<BrewFailure> failure;
        bool reload = false;
    };
    struct Found {
        QString query;
        BrewSearchResult result;
        QString error;
    };

    Preferences& prefs_;
    std::shared_ptr<BrewRunner> runner_;
    bool notInstalled_ = false;
    std::optional<BrewSnapshot> snapshot_;
    std::optional<BrewEnvironment> environment_;
    QString loadError_;
    std::optional<BrewRunner::BusyInfo> busy_;
    QList<BrewLogLine> log_;
    BrewProgressTracker tracker_;
    BrewProgressTracker::Update progress_;
    std::optional<BrewFailure> failure_;
    QString title_;
    std::optional<Command> last_;
    std::optional<QString> nextQuery_;
    BackgroundJob<Loaded> loadJob_;
    BackgroundJob<Ran, RunProgress> runJob_;
    BackgroundJob<Found> searchJob_;
};

} // namespace tarvik
