#pragma once

#include "core/speedtest/speed_test_server.h"
#include "core/sys/tcp_acked.h"

#include <QString>
#include <QUrl>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace tarvik {

// Every setting of a test can be overridden (tests point baseURL at a local server and shorten
// the phases).
struct SpeedTestConfiguration {
    QUrl baseURL = QUrl(QStringLiteral("https://speed.cloudflare.com/"));
    int latencySamples = 20;
    double transferDuration = 10.0; // seconds, each way
    double warmup = 2.0;            // seconds left out of each transfer figure
    int streams = 6;
    std::int64_t downloadChunk = 50'000'000;
    std::int64_t uploadChunk = 8'000'000;
    // Seconds a small answer (the server's details, a ping) may take from request to its end,
    // which one from a server that can be reached takes well under one.
    double answerTimeout = 10.0;
};

enum class SpeedTestPhase { Latency, Download, Upload };
QString rawValue(SpeedTestPhase phase);
QString title(SpeedTestPhase phase);

struct SpeedTestProgress {
    SpeedTestPhase phase = SpeedTestPhase::Latency;
    double phaseFraction = 0;
    std::optional<double> currentMbps;
    std::vector<double> samples;
    std::optional<double> idleLatency;
    std::optional<double> jitter;
    std::optional<double> downloadMbps;
    std::optional<double> uploadMbps;
    std::optional<SpeedTestServer> server;
    // One bar across the whole test: ping 10 %, download and upload 45 % each.
    double overallFraction() const;
};

// The errors a user reads.
struct SpeedTestError {
    enum class Kind { Unreachable, NoData };
    Kind kind;
    SpeedTestPhase phase = SpeedTestPhase::Latency;
    std::optional<QString> detail;
    QString message() const;
};

namespace SpeedTestMath {
double mbps(std::int64_t bytes, double seconds);
std::optional<double> median(std::vector<double> values);
// The mean of the differences between consecutive values, in the order measured.
double jitter(const std::vector<double>& values);
// The server's own time ("dur", ms) in a Server-Timing header value.
std::optional<double> serverDuration(const std::optional<QString>& header);
// A ping's time without the server's own work, never below 0.1 ms.
double pingMilliseconds(std::int64_t elapsedNs, std::optional<double> serverMs);
} // namespace SpeedTestMath

// Cumulative bytes of one transfer phase sampled over time; the warm-up never counts.
class ThroughputMeter {
public:
    struct Sample {
        double time;
        std::int64_t bytes;
    };
    explicit ThroughputMeter(double warmup) : warmup_(warmup) {}

    void record(double time, std::int64_t bytes) { samples_.push_back({time, bytes}); }
    std::int64_t totalBytes() const { return samples_.empty() ? 0 : samples_.back().bytes; }
    // The rate over the trailing `window` seconds.
    double current(double window = 1.0) const;
    // The phase's figure: from the first sample at or after the warm-up to the last.
    double result() const;
    const std::vector<Sample>& samples() const { return samples_; }

private:
    double warmup_;
    std::vector<Sample> samples_;
};

// An upload's running total as the server acknowledged it, from the kernel's count on each
// connection to the server, sampled through the phase. A connection already open before the
// phase counts only what it adds; one that closes keeps what it had. Where no connection to the
// server can be seen (through a proxy, say), it falls back to the bytes handed to the sockets.
class AcknowledgedUpload {
public:
    explicit AcknowledgedUpload(const std::vector<platform::TcpAcked>& before);
    std::int64_t update(std::int64_t handedOver, const std::vector<platform::TcpAcked>& now);

private:
    std::map<std::uint64_t, std::int64_t> before_; // by socket
    std::map<std::uint64_t, std::int64_t> latest_; // every connection seen during the phase
    std::int64_t counted_ = 0;
};

} // namespace tarvik
