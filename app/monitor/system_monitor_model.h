#pragma once

#include "app/shell/background_job.h"
#include "core/monitor/menu_bar_readings.h"
#include "core/monitor/metric_history.h"
#include "core/monitor/process_order.h"
#include "core/monitor/system_health.h"
#include "core/monitor/system_sampler.h"

#include <QObject>
#include <QTimer>
#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <set>

namespace tarvik {

class Preferences;

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
    std::vector<MenuBarReading>
    menuBarReadings(const std::vector<MenuBarStat>& stats,
                    const std::optional<AgentSessionReading>& agent = std::nullopt) const;

    const MetricHistory& history(Metric metric) const;
    // The health issues of the latest reading and the recent CPU history.
    const std::vector<HealthIssue>& healthIssues() const { return health_; }

    // Samples carry the process list while at least one holder wants it.
    void acquireProcesses();
    void releaseProcesses();
    // The latest process list, in the order read; empty until a sample carried one.
    const std::vector<ProcessUsage>& processes() const { return processes_; }
    ProcessSort processSort() const { return processSort_; }
    void setProcessSort(ProcessSort sort);

public slots:
    // After the machine wakes up: the next rates start afresh.
    void resetBaselines();

signals:
    void readingChanged();
    void runningChanged(bool running);
    void sessionTotalsChanged();
    void healthChanged();
    void processesChanged();
    void processSortChanged(ProcessSort sort);

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
    QTimer timer_;
    std::uint64_t sampleGeneration_ = 0; // of the sample in flight
    // After the sampler: going, it waits for its sample before the sampler goes.
    BackgroundJob<SystemReading> job_;
    std::optional<SystemReading> latest_;
    SessionTotals totals_;
    std::map<Metric, MetricHistory> histories_;
    std::vector<HealthIssue> health_;
    std::atomic<int> processHolders_ = 0;
    std::vector<ProcessUsage> processes_;
    ProcessSort processSort_ = ProcessSort::CPU;
};

} // namespace tarvik
