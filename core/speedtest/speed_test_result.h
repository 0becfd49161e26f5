#pragma once

#include "core/speedtest/speed_test_server.h"

#include <QDateTime>
#include <QJsonObject>
#include <QUuid>
#include <array>
#include <cstdint>
#include <optional>

namespace tarvik {

// How much latency grows while the line is busy, A (barely) to F (calls and games suffer).
enum class BufferbloatGrade { A, B, C, D, F };
QString rawValue(BufferbloatGrade grade);
QString summary(BufferbloatGrade grade);
BufferbloatGrade bufferbloatGrade(double idleMs, double loadedMs);

struct SpeedTestResult {
    QUuid id = QUuid::createUuid();
    QDateTime date;
    double downloadMbps = 0;
    double uploadMbps = 0;
    double idleLatency = 0; // ms, median of the idle pings
    double jitter = 0;      // ms
    std::optional<double> downloadLatency;
    std::optional<double> uploadLatency;
    std::int64_t bytesDownloaded = 0;
    std::int64_t bytesUploaded = 0;
    std::optional<SpeedTestServer> server;
    std::optional<QString> connection;

    std::optional<double> loadedLatency() const;
    std::optional<BufferbloatGrade> bufferbloat() const;
    std::int64_t dataUsed() const { return bytesDownloaded + bytesUploaded; }

    QJsonObject toJson() const;
    // A record without a readable id or date is none.
    static std::optional<SpeedTestResult> fromJson(const QJsonObject& o);
};

enum class SpeedTestUseCase {
    Browsing,
    HdStreaming,
    UhdStreaming,
    VideoCalls,
    Gaming,
    CloudBackup
};
inline constexpr std::array<SpeedTestUseCase, 6> kAllUseCases{
    SpeedTestUseCase::Browsing,   SpeedTestUseCase::HdStreaming, SpeedTestUseCase::UhdStreaming,
    SpeedTestUseCase::VideoCalls, SpeedTestUseCase::Gaming,      SpeedTestUseCase::CloudBackup};
QString rawValue(SpeedTestUseCase useCase);
QString title(SpeedTestUseCase useCase);

enum class Verdict { Poor = 0, Ok = 1, Great = 2 };
QString title(Verdict verdict);
std::optional<Verdict> verdictFromRaw(int raw);
Verdict verdict(SpeedTestUseCase useCase, const SpeedTestResult& result);

namespace SpeedFormat {
QString mbps(double value);
QString milliseconds(double value);
} // namespace SpeedFormat

} // namespace tarvik
