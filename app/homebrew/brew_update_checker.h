#pragma once

#include "app/shell/background_job.h"
#include "core/homebrew/brew_runner.h"

#include <QObject>
#include <QTimer>
#include <memory>

namespace tarvik {

class Preferences;

// The periodic update check: every "homebrewCheckInterval" seconds it runs `brew update`, then
// reads what is outdated, tells the desktop when more became upgradable, and publishes the
// count for the sidebar's badge.
class BrewUpdateChecker : public QObject {
    Q_OBJECT
public:
    BrewUpdateChecker(Preferences& preferences, std::shared_ptr<BrewRunner> runner,
                      QObject* parent = nullptr);
    ~BrewUpdateChecker() override;

    int outdatedCount() const { return count_; }
    void setOutdatedCount(int count); // a fresh load of the list knows it too

public slots:
    // Starts a check when one is due (and none runs); true when it started.
    bool checkIfDue();

signals:
    void outdatedCountChanged(int count);

private:
    Preferences& prefs_;
    std::shared_ptr<BrewRunner> runner_;
    QTimer timer_;
    int count_ = 0;
    BackgroundJob<int> job_;
};

} // namespace tarvik
