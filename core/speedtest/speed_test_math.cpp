#include "core/speedtest/speed_test_math.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace tarvik {

QString rawValue(SpeedTestPhase phase) {
    switch (phase) {
    case SpeedTestPhase::Latency:
        return QStringLiteral("latency");
    case SpeedTestPhase::Download:
        return QStringLiteral("download");
    case SpeedTestPhase::Upload:
        return QStringLiteral("upload");
    }
    return {};
}

QString title(SpeedTestPhase phase) {
    switch (phase) {
    case SpeedTestPhase::Latency:
        return QStringLiteral("Ping");
    case SpeedTestPhase::Download:
        return QStringLiteral("Download");
    case SpeedTestPhase::Upload:
        return QStringLiteral("Upload");
    }
    return {};
}

double SpeedTestProgress::overallFraction() const {
    const double f = std::clamp(phaseFraction, 0.0, 1.0);
    switch (phase) {
    case SpeedTestPhase::Latency:
        return 0.1 * f;
    case SpeedTestPhase::Download:
        return 0.1 + 0.45 * f;
    case SpeedTestPhase::Upload:
        return 0.55 + 0.45 * f;
    }
    return 0;
}

QString SpeedTestError::message() const {
    if (kind == Kind::Unreachable) {
        return QStringLiteral("Couldn't reach the speed test server. ") +
               detail.value_or(QString());
    }
    QString m = QStringLiteral("The ") + title(phase).toLower() +
                QStringLiteral(" test didn't transfer any data.");
    if (detail) {
        m += QLatin1Char(' ') + *detail;
    }
    return m;
}

namespace SpeedTestMath {

double mbps(std::int64_t bytes, double seconds) {
    if (seconds <= 0 || bytes < 1) {
        return 0;
    }
    return static_cast<double>(bytes) * 8.0 / seconds / 1'000'000.0;
}

std::optional<double> median(std::vector<double> values) {
    if (values.empty()) {
        return std::nullopt;
    }
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

double jitter(const std::vector<double>& values) {
    if (values.size() < 2) {
        return 0;
    }
    double sum = 0;
    for (std::size_t i = 1; i < values.size(); ++i) {
        sum += std::fabs(values[i] - values[i - 1]);
    }
    return sum / static_cast<double>(values.size() - 1);
}

std::optional<double> serverDuration(const std::optional<QString>& header) {
    if (!header) {
        return std::nullopt;
    }
    for (const QString& metric : header->split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        for (const QString& raw : metric.split(QLatin1Char(';'))) {
            const QString parameter = raw.trimmed();
            const auto eq = parameter.indexOf(QLatin1Char('='));
            if (eq < 0 || parameter.left(eq) != QLatin1String("dur")) {
                continue;
            }
            bool ok = false;
            const double value = parameter.mid(eq + 1).toDouble(&ok);
            if (ok) {
                return value;
            }
        }
    }
    return std::nullopt;
}

double pingMilliseconds(std::int64_t elapsedNs, std::optional<double> serverMs) {
    return std::max(static_cast<double>(elapsedNs) / 1e6 - serverMs.value_or(0.0), 0.1);
}

} // namespace SpeedTestMath

double ThroughputMeter::current(double window) const {
    if (samples_.empty()) {
        return 0;
    }
    const Sample& now = samples_.back();
    const Sample* then = &samples_.front();
    for (const auto& s : samples_) {
        if (s.time <= now.time - window) {
            then = &s; // the newest sample at least a window old
        }
    }
    const double dt = now.time - then->time;
    const std::int64_t moved = now.bytes - then->bytes;
    return dt > 0 && moved > 0 ? SpeedTestMath::mbps(moved, dt) : 0;
}

double ThroughputMeter::result() const {
    if (samples_.empty()) {
        return 0;
    }
    const Sample& last = samples_.back();
    const Sample* base = &samples_.front();
    for (const auto& s : samples_) {
        if (s.time >= warmup_ && s.time < last.time) {
            base = &s;
            break;
        }
    }
    if (base == &last) {
        return SpeedTestMath::mbps(last.bytes, last.time);
    }
    return SpeedTestMath::mbps(last.bytes - base->bytes, last.time - base->time);
}

AcknowledgedUpload::AcknowledgedUpload(const std::vector<platform::TcpAcked>& before) {
    for (const auto& c : before) {
        before_[c.socket] = c.bytes;
    }
}

std::int64_t AcknowledgedUpload::update(std::int64_t handedOver,
                                        const std::vector<platform::TcpAcked>& now) {
    for (const auto& c : now) {
        latest_[c.socket] = c.bytes;
    }
    std::int64_t total = handedOver;
    if (!latest_.empty()) {
        total = 0;
        for (const auto& [socket, bytes] : latest_) {
            const auto earlier = before_.find(socket);
            total += bytes - (earlier == before_.end() ? 0 : earlier->second);
        }
    }
    // Held where the first reading of the kernel's counts is below what was handed over.
    counted_ = std::max(counted_, total);
    return counted_;
}

} // namespace tarvik
