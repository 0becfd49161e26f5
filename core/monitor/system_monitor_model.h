#pragma once

#include "core/monitor/menu_bar_readings.h"
#include "core/monitor/system_sampler.h"

#include <QFutureWatcher>
#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <atomic>
#include <memory>
#include <optional>
#include <set>

namespace tarvik {

class Preferences;

enum class MonitorClient { Window, MenuPanel, MenuBarLabel };

// The sampling interval from "monitorInterval": unset or ≤ 0 is 2 s, then clamped to 1…10 s.
double clampedMonitorInterval(std::optional<double> preference);
// With only the tray label to feed, sampling slows to every 5 s at most.
double samplingInterval(double clampedInterval, bool onlyMenuBarLabel);

struct SessionTotals {
    std::uint64_t received = 0;
    std::uint64_t sent = 0;
    std::uint64_t read = 0;
    std::uint64_t written = 0;
};

// Drives the sampler on a timer while at least one client needs live data, and publishes
// each reading on the interface thread.
class SystemMonitorModel : public QObject {
    Q_OBJECT
public:
    SystemMonitorModel(Preferences& preferences, SamplerOptions options = {},
                       QObject* parent = nullptr);
    ~SystemMonitorModel() override;

    void acquire(MonitorClient client);
    void release(MonitorClient client);
    bool isRunning() const { return running_; }
    // Seconds between samples at the current cadence.
    double currentInterval() const;

    const std::optional<SystemReading>& latest() const { return latest_; }
    const CPUTopology& topology() const { return topology_; }
    const SessionTotals& sessionTotals() const { return totals_; }
    void resetSessionTotals();
    std::vector<MenuBarReading> menuBarReadings(const std::vector<MenuBarStat>& stats) const;

public slots:
    // After the machine wakes up: the next rates start afresh.
    void resetBaselines();

signals:
    void readingChanged();
    void runningChanged(bool running);
    void sessionTotalsChanged();

private:
    bool onlyMenuBarLabel() const;
    void start();
    void stop();
    void sampleNow();
    void apply(SystemReading reading);

    Preferences& prefs_;
    std::unique_ptr<SystemSampler> sampler_;
    CPUTopology topology_;
    std::multiset<MonitorClient> clients_;
    bool running_ = false;
    std::uint64_t generation_ = 0; // a stopped loop's sample in flight is not applied
    std::atomic<bool> resetRequested_ = false;
    QThreadPool pool_; // one thread: the sampler's own serial queue
    QTimer timer_;
    QFutureWatcher<SystemReading> watcher_;
    std::optional<SystemReading> latest_;
    SessionTotals totals_;
};

} // namespace tarvik
