#include "core/speedtest/speed_test_engine.h"

#include "core/agents/limits/retry_after.h"
#include "core/net/limited_answer.h"
#include "core/net/worker_wait.h"
#include "core/sys/tcp_acked.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace tarvik {
namespace {

struct Cancelled {};

// How long a transfer may go without a byte moving.
constexpr int kTransferTimeoutMs = 60'000;
// The most a small answer (the server's details, a ping) may hold: the service's are a few
// hundred bytes.
constexpr qint64 kAnswerBytes = 64 * 1024;
// What a transfer's reply may hold unread: downloads are counted as they come, never kept, and
// a server sending faster than they are counted waits for them.
constexpr qint64 kTransferBuffer = 1 << 20;

QNetworkRequest request(const QUrl& base, const QString& path) {
    QNetworkRequest r(base.resolved(QUrl(path)));
    r.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    r.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    r.setTransferTimeout(kTransferTimeoutMs);
    // The service answers "meta" only to requests that come from its own page.
    r.setRawHeader("Referer", base.toString().toUtf8());
    // The bytes on the wire are what is measured, and nothing is inflated: Qt decompresses
    // only what it asked to be compressed.
    r.setRawHeader("Accept-Encoding", "identity");
    return r;
}

const QString kTooLarge = QStringLiteral("The server's answer was too large.");

// A small answer, read within the test's limits.
LimitedAnswer limited(QNetworkReply* reply, const SpeedTestConfiguration& config) {
    return {reply, kAnswerBytes, static_cast<int>(config.answerTimeout * 1000)};
}

// Why a small request got no answer, or not a whole one.
QString noAnswer(const QNetworkReply& reply, const LimitedAnswer& answer,
                 const SpeedTestConfiguration& config) {
    switch (answer.cut()) {
    case LimitedAnswer::Cut::TooLarge:
        return kTooLarge;
    case LimitedAnswer::Cut::TooSlow:
        return QStringLiteral("The server didn't answer within %1 s.")
            .arg(QString::number(config.answerTimeout));
    case LimitedAnswer::Cut::None:
        break;
    }
    return reply.errorString();
}

// A session of its own: its own connection pool, no cookies kept.
std::unique_ptr<QNetworkAccessManager> session() {
    return std::make_unique<QNetworkAccessManager>();
}

class Runner {
public:
    Runner(const SpeedTestConfiguration& config, const std::atomic<bool>* cancel)
        : config_(config), cancel_(cancel) {}

    void check() const {
        if (cancel_ != nullptr && cancel_->load()) {
            throw Cancelled{};
        }
    }

    // Runs the event loop until `done` quits it, or cancellation does.
    void wait(QEventLoop& loop) {
        if (waitUnlessCancelled(loop, cancel_)) {
            throw Cancelled{};
        }
    }

    // The server's addresses, looked up once for the whole test. A name that doesn't resolve
    // ends the test with the resolver's words: otherwise each request would ask the resolver
    // again, and offline each waits for it in turn.
    std::vector<QHostAddress> serverAddresses() const {
        const auto found = lookUpHost(config_.baseURL.host(), cancel_);
        if (!found) {
            throw Cancelled{};
        }
        const QList<QHostAddress> addresses = found->addresses();
        if (found->error() != QHostInfo::NoError || addresses.isEmpty()) {
            throw SpeedTestError{
                SpeedTestError::Kind::Unreachable, SpeedTestPhase::Latency,
                found->error() != QHostInfo::NoError
                    ? found->errorString()
                    : QStringLiteral("%1 has no address.").arg(config_.baseURL.host())};
        }
        return {addresses.begin(), addresses.end()};
    }

    struct Fetched {
        std::optional<QByteArray> body; // none when the request failed
        bool answered = false;          // the server sent a status, whatever it was
        bool cut = false;               // the answer broke the limits of a small one
        QString error;
    };
    Fetched fetch(QNetworkAccessManager& nam, const QString& path) {
        QNetworkReply* reply = nam.get(request(config_.baseURL, path));
        const LimitedAnswer answer = limited(reply, config_);
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        try {
            wait(loop);
        } catch (const Cancelled&) {
            reply->abort();
            reply->deleteLater();
            throw;
        }
        Fetched out;
        out.answered = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() != 0;
        out.cut = answer.cut() != LimitedAnswer::Cut::None;
        if (reply->error() == QNetworkReply::NoError) {
            out.body = answer.body();
        } else {
            out.error = noAnswer(*reply, answer, config_);
        }
        reply->deleteLater();
        return out;
    }

    struct PingOutcome {
        std::optional<double> ms;
        std::optional<QString> error;
    };
    // Starts a ping; `done` receives its outcome on this thread's event loop.
    static QNetworkReply* startPing(QNetworkAccessManager& nam,
                                    const SpeedTestConfiguration& config,
                                    std::function<void(PingOutcome)> done) {
        auto clock = std::make_shared<QElapsedTimer>();
        clock->start();
        QNetworkReply* reply = nam.get(request(config.baseURL, QStringLiteral("__down?bytes=0")));
        const LimitedAnswer answer = limited(reply, config);
        QObject::connect(
            reply, &QNetworkReply::finished, reply, [reply, clock, done, answer, &config] {
                const qint64 elapsed = clock->nsecsElapsed();
                PingOutcome out;
                const int status =
                    reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
                if (reply->error() != QNetworkReply::NoError &&
                    (status == 0 || answer.cut() != LimitedAnswer::Cut::None)) {
                    out.error = noAnswer(*reply, answer, config);
                } else if (status < 200 || status > 299) {
                    out.error = QStringLiteral("The server answered with an error.");
                } else {
                    const QByteArray timing = reply->rawHeader("Server-Timing");
                    out.ms = SpeedTestMath::pingMilliseconds(
                        elapsed, SpeedTestMath::serverDuration(
                                     timing.isNull() ? std::nullopt
                                                     : std::optional(QString::fromLatin1(timing))));
                }
                reply->deleteLater();
                done(out);
            });
        return reply;
    }

    PingOutcome ping(QNetworkAccessManager& nam) {
        PingOutcome result;
        QEventLoop loop;
        QPointer<QNetworkReply> reply = startPing(nam, config_, [&](PingOutcome o) {
            result = o;
            loop.quit();
        });
        try {
            wait(loop);
        } catch (const Cancelled&) {
            if (reply) {
                reply->abort();
            }
            throw;
        }
        return result;
    }

    const SpeedTestConfiguration& config_;
    const std::atomic<bool>* cancel_;
};

struct StreamFailure {
    std::optional<QString> description; // none when the request went well
    double wait = 0.5;                  // seconds before the stream asks again
};

StreamFailure streamFailure(QNetworkReply::NetworkError error, int status, const QString& text,
                            const QByteArray& retryAfter) {
    if (status == 429) {
        const auto wait = retryAfter.isNull() ? std::nullopt
                                              : retryAfterSeconds(QString::fromLatin1(retryAfter),
                                                                  QDateTime::currentDateTimeUtc());
        if (wait) {
            return {QStringLiteral("The server is limiting requests and asked to wait %1 s.")
                        .arg(std::ceil(*wait)),
                    *wait};
        }
        return {QStringLiteral("The server is limiting requests."), 0.5};
    }
    if (status >= 300) {
        return {QStringLiteral("The server answered HTTP %1.").arg(status), 0.5};
    }
    if (error != QNetworkReply::NoError) {
        return {text, 0.5};
    }
    return {};
}

// Where the sockets of a test connect to: every address of the server's name, on its port.
std::vector<platform::TcpPeer> serverPeers(const QUrl& base,
                                           const std::vector<QHostAddress>& addresses) {
    const auto port =
        static_cast<quint16>(base.port(base.scheme() == QLatin1String("https") ? 443 : 80));
    std::vector<platform::TcpPeer> peers;
    for (const QHostAddress& address : addresses) {
        peers.push_back({address, port});
    }
    return peers;
}

struct PhaseOutcome {
    double mbps = 0;
    std::optional<double> loadedLatency;
    std::int64_t bytes = 0;
};

// One transfer phase: `streams` sessions re-issuing their request until the phase ends.
PhaseOutcome transfer(Runner& runner, const SpeedTestConfiguration& config, SpeedTestPhase phase,
                      const std::vector<QHostAddress>& server, SpeedTestProgress& progress,
                      const std::function<void(const SpeedTestProgress&)>& publish) {
    progress.phase = phase;
    progress.phaseFraction = 0;
    progress.currentMbps.reset();
    progress.samples.clear();
    publish(progress);

    struct Monitor {
        std::int64_t transferred = 0; // read, or for uploads handed to the sockets
        bool running = true;
        std::optional<QString> lastError;
        // The service refuses downloads of 100 MB and more; a refused size is halved.
        std::int64_t downloadChunk = 0;
    } monitor;
    monitor.downloadChunk = config.downloadChunk;
    const bool download = phase == SpeedTestPhase::Download;
    // One zero-filled body, shared by every upload request of the phase.
    const QByteArray zeros = download ? QByteArray() : QByteArray(config.uploadChunk, '\0');
    // An upload counts what the server has acknowledged, as the kernel counts it on each
    // connection: uploadProgress counts what went into the sockets, and on a link with a deep
    // queue their send buffers grow by megabytes during the phase. The probe's connection to
    // the same server adds only its pings' requests, a few hundred bytes a second, so every
    // connection to the server is summed.
    const std::vector<platform::TcpPeer> peers =
        download ? std::vector<platform::TcpPeer>() : serverPeers(config.baseURL, server);
    AcknowledgedUpload acknowledged(platform::ackedTowards(peers));
    std::vector<std::unique_ptr<QNetworkAccessManager>> sessions;
    std::function<void(QNetworkAccessManager*)> start;
    auto restartLater = [&](QNetworkAccessManager* nam, double seconds) {
        QTimer::singleShot(static_cast<int>(seconds * 1000), nam, [nam, &monitor, &start] {
            if (monitor.running) {
                start(nam);
            }
        });
    };
    start = [&](QNetworkAccessManager* nam) {
        QNetworkReply* reply = nullptr;
        std::optional<LimitedAnswer> answer; // an upload's
        if (download) {
            reply = nam->get(request(config.baseURL,
                                     QStringLiteral("__down?bytes=%1").arg(monitor.downloadChunk)));
            reply->setReadBufferSize(kTransferBuffer);
            QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply, &monitor] {
                monitor.transferred += reply->readAll().size(); // counted, never kept
            });
        } else {
            QNetworkRequest r = request(config.baseURL, QStringLiteral("__up"));
            r.setHeader(QNetworkRequest::ContentTypeHeader,
                        QStringLiteral("application/octet-stream"));
            auto* body = new QBuffer();
            body->setData(zeros);
            body->open(QIODevice::ReadOnly);
            reply = nam->post(r, body);
            body->setParent(reply);
            auto sent = std::make_shared<qint64>(0);
            QObject::connect(reply, &QNetworkReply::uploadProgress, reply,
                             [sent, &monitor](qint64 bytesSent, qint64) {
                                 if (bytesSent > *sent) {
                                     monitor.transferred += bytesSent - *sent;
                                     *sent = bytesSent;
                                 }
                             });
            // The answer to an upload is a status. Qt reads what follows it however small the
            // read buffer, so a body past a small answer's size ends the request.
            answer = LimitedAnswer(reply, kAnswerBytes, 0);
        }
        QObject::connect(reply, &QNetworkReply::finished, reply, [&, reply, nam, answer] {
            const auto error = reply->error();
            const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
            const QByteArray retryAfter = reply->rawHeader("Retry-After");
            if (reply->isOpen()) {
                reply->readAll();
            }
            reply->deleteLater();
            const bool tooLarge = answer && answer->cut() == LimitedAnswer::Cut::TooLarge;
            if (error == QNetworkReply::OperationCanceledError && !tooLarge) {
                return; // the phase ended
            }
            const StreamFailure failure = streamFailure(
                error, status, tooLarge ? kTooLarge : reply->errorString(), retryAfter);
            if (failure.description) {
                monitor.lastError = failure.description;
            }
            if (!monitor.running) {
                return;
            }
            if (status == 403 && download && monitor.downloadChunk > 1'000'000) {
                monitor.downloadChunk /= 2;
                start(nam);
            } else if (!failure.description) {
                start(nam);
            } else {
                // A rate limit is waited out; a wait past the phase's end never fires.
                restartLater(nam, failure.wait);
            }
        });
    };
    for (int i = 0; i < config.streams; ++i) {
        sessions.push_back(session());
        start(sessions.back().get());
    }

    // Latency while the line is busy, on a connection of its own.
    auto probe = session();
    std::vector<double> loaded;
    QElapsedTimer phaseClock;
    phaseClock.start();
    std::function<void()> nextProbe;
    bool first = true;
    nextProbe = [&] {
        Runner::startPing(*probe, config, [&](Runner::PingOutcome o) {
            if (!monitor.running) {
                return;
            }
            // The first ping only opens the connection; the warm-up is left out.
            if (o.ms && !first &&
                phaseClock.elapsed() >= static_cast<qint64>(config.warmup * 1000)) {
                loaded.push_back(*o.ms);
            }
            first = false;
            QTimer::singleShot(250, probe.get(), [&] {
                if (monitor.running) {
                    nextProbe();
                }
            });
        });
    };
    nextProbe();

    ThroughputMeter meter(config.warmup);
    std::optional<SpeedTestError> failure;
    QEventLoop loop;
    QTimer tick;
    tick.setInterval(200);
    QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
        const double t = static_cast<double>(phaseClock.nsecsElapsed()) / 1e9;
        meter.record(
            t, download ? monitor.transferred
                        : acknowledged.update(monitor.transferred, platform::ackedTowards(peers)));
        const double now = meter.current(1.0);
        progress.phaseFraction = std::min(t / config.transferDuration, 1.0);
        progress.currentMbps = now;
        progress.samples.push_back(now);
        publish(progress);
        if (t >= config.transferDuration) {
            if (meter.totalBytes() < 1) {
                failure = SpeedTestError{SpeedTestError::Kind::NoData, phase, monitor.lastError};
            }
            loop.quit();
        } else if (t > 4.0 && meter.totalBytes() < 1 && monitor.lastError) {
            failure = SpeedTestError{SpeedTestError::Kind::NoData, phase, monitor.lastError};
            loop.quit();
        }
    });
    tick.start();
    auto stop = [&] {
        tick.stop();
        monitor.running = false;
        for (auto& s : sessions) {
            for (auto* r : s->findChildren<QNetworkReply*>()) {
                r->abort();
            }
        }
        for (auto* r : probe->findChildren<QNetworkReply*>()) {
            r->abort();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    try {
        runner.wait(loop);
    } catch (const Cancelled&) {
        stop();
        throw;
    }
    stop();
    if (failure) {
        throw *failure;
    }
    return {meter.result(), SpeedTestMath::median(loaded), meter.totalBytes()};
}

} // namespace

SpeedTestEngine::SpeedTestEngine(SpeedTestConfiguration configuration)
    : config_(std::move(configuration)) {}

std::optional<SpeedTestResult>
SpeedTestEngine::run(const std::optional<QString>& connection,
                     const std::function<void(const SpeedTestProgress&)>& progress,
                     const std::atomic<bool>* cancel) const {
    Runner runner(config_, cancel);
    SpeedTestProgress p;
    auto publish = [&progress](const SpeedTestProgress& now) {
        if (progress) {
            progress(now);
        }
    };
    try {
        publish(p);
        const std::vector<QHostAddress> addresses = runner.serverAddresses();
        // Where the test runs: "meta", filled in from the trace; neither is required, but a
        // server that doesn't answer the first request at all can't be reached, and every
        // further request would wait as long; nor is one whose first answer is too large or
        // never ends the service, and every further answer would be the same.
        auto nam = session();
        std::optional<SpeedTestServer> server;
        const auto meta = runner.fetch(*nam, QStringLiteral("meta"));
        if (!meta.answered || meta.cut) {
            throw SpeedTestError{SpeedTestError::Kind::Unreachable, SpeedTestPhase::Latency,
                                 meta.error};
        }
        if (meta.body) {
            server = SpeedTestServer::fromMeta(*meta.body);
        }
        if (const auto trace = runner.fetch(*nam, QStringLiteral("cdn-cgi/trace")); trace.body) {
            const SpeedTestServer fromTrace =
                SpeedTestServer::fromTrace(QString::fromUtf8(*trace.body));
            server = server ? server->filled(fromTrace) : fromTrace;
        }
        SpeedTestResult result;
        result.server = server;
        p.server = server;
        result.connection = connection;
        publish(p);

        std::vector<double> pings;
        std::optional<QString> lastError;
        for (int i = 1; i <= config_.latencySamples; ++i) {
            runner.check();
            const auto outcome = runner.ping(*nam);
            if (outcome.ms) {
                pings.push_back(*outcome.ms);
            } else {
                lastError = outcome.error;
            }
            p.phaseFraction = static_cast<double>(i) / config_.latencySamples;
            p.idleLatency = SpeedTestMath::median(pings);
            p.jitter = pings.empty() ? std::nullopt : std::optional(SpeedTestMath::jitter(pings));
            publish(p);
        }
        if (pings.empty()) {
            throw SpeedTestError{
                SpeedTestError::Kind::Unreachable, SpeedTestPhase::Latency,
                lastError.value_or(QStringLiteral("Check your internet connection."))};
        }
        nam.reset();

        const PhaseOutcome down =
            transfer(runner, config_, SpeedTestPhase::Download, addresses, p, publish);
        p.downloadMbps = down.mbps;
        publish(p);
        const PhaseOutcome up =
            transfer(runner, config_, SpeedTestPhase::Upload, addresses, p, publish);
        p.uploadMbps = up.mbps;
        publish(p);

        result.date = QDateTime::currentDateTimeUtc();
        result.downloadMbps = down.mbps;
        result.uploadMbps = up.mbps;
        result.idleLatency = *SpeedTestMath::median(pings);
        result.jitter = SpeedTestMath::jitter(pings);
        result.downloadLatency = down.loadedLatency;
        result.uploadLatency = up.loadedLatency;
        result.bytesDownloaded = down.bytes;
        result.bytesUploaded = up.bytes;
        return result;
    } catch (const Cancelled&) {
        return std::nullopt;
    }
}

} // namespace tarvik
