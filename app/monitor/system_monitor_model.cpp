#include "app/monitor/system_monitor_model.h"

#include "core/settings/preferences.h"

namespace tarvik {

namespace {

// About a minute of CPU at the default 2 s: the health check's "for a while". The charts keep
// three minutes.
constexpr std::size_t kCPUPoints = 30;
constexpr std::size_t kChartPoints = 90;

} // namespace

SystemMonitorModel::SystemMonitorModel(Preferences& preferences, SamplerOptions options,
                                       QObject* parent)
    : QObject(parent), prefs_(preferences),
      sampler_(std::make_unique<SystemSampler>(std::move(options))),
      topology_(sampler_->topology()),
      job_(
          this, {},
          [this](SystemReading reading) {
              if (!running_) {
                  return; // stopped while sampling
              }
              if (sampleGeneration_ != generation_) {
                  sampleNow(); // stopped and started again while sampling: this one is stale
                  return;
              }
              apply(std::move(reading));
              timer_.start(static_cast<int>(currentInterval() * 1000));
          },
          JobThread::Own) {
    for (Metric m :
         {Metric::CPU, Metric::Memory, Metric::NetworkIn, Metric::NetworkOut, Metric::DiskRead,
          Metric::DiskWrite, Metric::GPU, Metric::Battery, Metric::Load}) {
        histories_.emplace(m, MetricHistory(m == Metric::CPU ? kCPUPoints : kChartPoints));
    }
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &SystemMonitorModel::sampleNow);
    connect(&prefs_, &Preferences::changed, this, [this](const QString& key) {
        if (running_ && key == QLatin1String(pref::kMonitorInterval.data())) {
            timer_.start(static_cast<int>(currentInterval() * 1000));
        }
    });
}

SystemMonitorModel::~SystemMonitorModel() {
    stop();
}

double SystemMonitorModel::currentInterval() const {
    const QVariant v = prefs_.value(pref::kMonitorInterval);
    const std::optional<double> preference =
        prefs_.isStored(pref::kMonitorInterval) ? std::optional(v.toDouble()) : std::nullopt;
    return samplingInterval(clampedMonitorInterval(preference), onlyMenuBarLabel());
}

bool SystemMonitorModel::onlyMenuBarLabel() const {
    return clients_.count(MonitorClient::Window) == 0 &&
           clients_.count(MonitorClient::MenuPanel) == 0;
}

void SystemMonitorModel::acquire(MonitorClient client) {
    const bool cadenceChanges = onlyMenuBarLabel() && client != MonitorClient::MenuBarLabel;
    clients_.insert(client);
    if (!running_) {
        start();
    } else if (cadenceChanges) {
        // The first window or panel wants the faster cadence now, not after the slow wait.
        timer_.stop();
        if (!job_.isRunning()) {
            sampleNow();
        }
    }
}

void SystemMonitorModel::release(MonitorClient client) {
    const auto it = clients_.find(client);
    if (it == clients_.end()) {
        return;
    }
    clients_.erase(it);
    if (clients_.empty()) {
        stop();
    }
}

void SystemMonitorModel::start() {
    running_ = true;
    emit runningChanged(true);
    sampleNow();
}

void SystemMonitorModel::stop() {
    if (!running_) {
        return;
    }
    running_ = false;
    ++generation_;
    timer_.stop();
    emit runningChanged(false);
}

void SystemMonitorModel::resetBaselines() {
    resetRequested_ = true;
}

void SystemMonitorModel::sampleNow() {
    if (!running_ || job_.isRunning()) {
        return;
    }
    sampleGeneration_ = generation_;
    job_.start([sampler = sampler_.get(), reset = &resetRequested_,
                withProcesses = processHolders_ > 0](JobContext<double>&) {
        if (reset->exchange(false)) {
            sampler->resetBaselines();
        }
        return sampler->sample(withProcesses);
    });
}

void SystemMonitorModel::apply(SystemReading reading) {
    if (reading.network) {
        totals_.received += reading.network->firstBytes;
        totals_.sent += reading.network->secondBytes;
    }
    if (reading.disk) {
        totals_.read += reading.disk->firstBytes;
        totals_.written += reading.disk->secondBytes;
    }
    auto add = [this, &reading](Metric m, double value) {
        histories_.at(m).add({reading.date, value});
    };
    if (reading.cpu) {
        add(Metric::CPU, reading.cpu->total());
    }
    add(Metric::Memory, reading.memory ? reading.memory->usedFraction() : 0.0);
    if (reading.network) {
        add(Metric::NetworkIn, reading.network->firstPerSecond);
        add(Metric::NetworkOut, reading.network->secondPerSecond);
    }
    if (reading.disk) {
        add(Metric::DiskRead, reading.disk->firstPerSecond);
        add(Metric::DiskWrite, reading.disk->secondPerSecond);
    }
    add(Metric::GPU, reading.gpu.value_or(0.0));
    add(Metric::Battery, reading.battery ? reading.battery->charge : 0.0);
    add(Metric::Load, reading.loadAverage ? reading.loadAverage->one : 0.0);

    const bool withProcesses = reading.processes.has_value();
    if (withProcesses) {
        processes_ = std::move(*reading.processes);
        reading.processes.reset();
    }
    const HealthInput input = healthInput(reading, histories_.at(Metric::CPU).values(),
                                          withProcesses ? &processes_ : nullptr);
    health_ = SystemHealth::assess(input);

    latest_ = std::move(reading);
    emit readingChanged();
    emit sessionTotalsChanged();
    emit healthChanged();
    if (withProcesses) {
        emit processesChanged();
    }
}

const MetricHistory& SystemMonitorModel::history(Metric metric) const {
    return histories_.at(metric);
}

void SystemMonitorModel::acquireProcesses() {
    ++processHolders_;
}

void SystemMonitorModel::releaseProcesses() {
    if (processHolders_ > 0) {
        --processHolders_;
    }
}

void SystemMonitorModel::setProcessSort(ProcessSort sort) {
    if (sort != processSort_) {
        processSort_ = sort;
        emit processSortChanged(sort);
    }
}

void SystemMonitorModel::resetSessionTotals() {
    totals_ = {};
    emit sessionTotalsChanged();
}

std::vector<MenuBarReading>
SystemMonitorModel::menuBarReadings(const std::vector<MenuBarStat>& stats,
                                    const std::optional<AgentSessionReading>& agent) const {
    return tarvik::menuBarReadings(latest_, stats, agent);
}

} // namespace tarvik
