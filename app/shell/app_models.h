#pragma once

#include "app/agents/agents_model.h"
#include "app/awake/keyboard_lock.h"
#include "app/homebrew/brew_model.h"
#include "app/homebrew/brew_update_checker.h"
#include "app/junk/junk_model.h"
#include "app/monitor/system_monitor_model.h"
#include "app/overview/overview_model.h"
#include "app/shell/navigator.h"
#include "app/speedtest/speed_test_model.h"
#include "core/awake/keep_awake_controller.h"
#include "core/cleanup/free_space_recorder.h"
#include "core/settings/preferences.h"
#include "core/shell/login_item.h"
#include "core/sys/sleep_watcher.h"
#include "dock/dock_folders.h"

#include <QObject>

namespace tarvik {

// The long-lived models, created once at start and shared by the window and the tray, so both
// show the same live data.
class AppModels : public QObject {
    Q_OBJECT
public:
    struct Options {
        QString preferencesFile;
        QString autostartDir;
        QString executable;
        MachineSummaryOptions summary;
        SamplerOptions sampler;
        // How System Junk scans and cleans; empty means this user's home, guard and Trash.
        std::optional<JunkModel::Dependencies> junk;
        // Where the free-space history is kept; empty keeps none (tests).
        QString timelinePath;
        // The brew runner; empty means the machine's own Homebrew.
        std::shared_ptr<BrewRunner> brewRunner;
        // Where logind and the desktop's idle inhibit are reached; tests give a private bus.
        std::optional<KeepAwakeBuses> keepAwakeBuses = std::nullopt;
        // The input devices the keyboard lock takes.
        QString inputDir = QStringLiteral("/dev/input");
        // Where the Dock's folders and spacers are written; empty means this user's.
        std::optional<DockPaths> dockPaths = std::nullopt;
    };
    static Options defaultOptions();

    explicit AppModels(const Options& options, QObject* parent = nullptr);

    Preferences& preferences() { return preferences_; }
    Navigator& navigator() { return navigator_; }
    LoginItem& loginItem() { return loginItem_; }
    OverviewModel& overview() { return overview_; }
    SystemMonitorModel& monitor() { return monitor_; }
    JunkModel& junk() { return junk_; }
    BrewModel& brew() { return brew_; }
    BrewUpdateChecker& brewUpdates() { return brewUpdates_; }
    SpeedTestModel& speedTest() { return speedTest_; }
    AgentsModel& agents() { return agents_; }
    KeepAwakeController& keepAwake() { return keepAwake_; }
    KeyboardLock& keyboardLock() { return keyboardLock_; }
    const DockFolders& dockFolders() const { return dockFolders_; }

private:
    void wireKeepAwake();
    Preferences preferences_;
    SystemMonitorModel monitor_;
    SleepWatcher sleep_;
    Navigator navigator_;
    LoginItem loginItem_;
    JunkModel junk_;
    OverviewModel overview_;
    std::shared_ptr<BrewRunner> brewRunner_;
    BrewModel brew_;
    BrewUpdateChecker brewUpdates_;
    SpeedTestModel speedTest_;
    AgentsModel agents_;
    KeepAwakeController keepAwake_;
    KeyboardLock keyboardLock_;
    DockFolders dockFolders_;
    std::unique_ptr<FreeSpaceRecorder> freeSpace_;
};

} // namespace tarvik
