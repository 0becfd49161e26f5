#include "core/monitor/system_monitor_model.h"

#include "core/shell/preferences.h"

#include <QtConcurrent/QtConcurrentRun>
#include <cmath>

namespace tarvik {

double clampedMonitorInterval(std::optional<double> preference) {
    if (!preference || !std::isfinite(*preference) || *preference <= 0) {
        return 2.0;
    }
    return std::clamp(*preference, 1.0, 10.0);
}

double samplingInterval(double clampedInterval, bool onlyMenuBarLabel) {
    return onlyMenuBarLabel && clampedInterval <= 5.0 ? 5.0 : clampedInterval;
}

SystemMonitorModel::SystemMonitorModel(Preferences& preferences, SamplerOptions options,
                                       QObject* parent)
    : QObject(parent), prefs_(preferences),
      sampler_(std::make_unique<SystemSampler>(std::move(options))),
      topology_(sampler_->topology()) {
    pool_.setMaxThreadCount(1);
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &SystemMonitorModel::sampleNow);
    connect(&watcher_, &QFutureWatcher<SystemReading>::finished, this, [this] {
        const auto generation = watcher_.property("generation").toULongLong();
        if (!running_ || generation != generation_) {
            return; // cancelled while sampling: stop before applying
        }
        apply(watcher_.result());
        timer_.start(static_cast<int>(currentInterval() * 1000));
    });
    connect(&prefs_, &Preferences::changed, this, [this](const QString& key) {
        if (running_ && key == QLatin1String(pref::kMonitorInterval.data())) {
            timer_.start(static_cast<int>(currentInterval() * 1000));
        }
    });
}

SystemMonitorModel::~SystemMonitorModel() {
    stop();
    pool_.waitForDone();
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
        if (!watcher_.isRunning()) {
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
    if (!running_ || watcher_.isRunning()) {
        return;
    }
    watcher_.setProperty("generation", QVariant::fromValue(generation_));
    watcher_.setFuture(QtConcurrent::run(&pool_, [this] {
        if (resetRequested_.exchange(false)) {
            sampler_->resetBaselines();
        }
        return sampler_->sample();
    }));
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
    latest_ = std::move(reading);
    emit readingChanged();
    emit sessionTotalsChanged();
}

void SystemMonitorModel::resetSessionTotals() {
    totals_ = {};
    emit sessionTotalsChanged();
}

std::vector<MenuBarReading>
SystemMonitorModel::menuBarReadings(const std::vector<MenuBarStat>& stats) const {
    return tarvik::menuBarReadings(latest_, stats);
}

} // namespace tarvik
