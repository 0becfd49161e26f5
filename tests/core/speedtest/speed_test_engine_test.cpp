// Runs the engine against a real HTTP server on 127.0.0.1 that speaks the speed-test endpoints.
#include "core/speedtest/speed_test_engine.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QUrlQuery>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

class SpeedServer : public QObject {
public:
    bool failPings = false;

    quint16 listen() {
        quint16 port = 0;
        QMetaObject::invokeMethod(
            this,
            [this, &port] {
                server_ = new QTcpServer(this);
                server_->listen(QHostAddress::LocalHost, 0);
                port = server_->serverPort();
                connect(server_, &QTcpServer::newConnection, this, [this] {
                    while (QTcpSocket* s = server_->nextPendingConnection()) {
                        connect(s, &QTcpSocket::readyRead, this, [this, s] { serve(s); });
                        connect(s, &QTcpSocket::bytesWritten, this, [this, s] { pump(s); });
                        connect(s, &QTcpSocket::disconnected, this, [this, s] {
                            pending_.erase(s);
                            s->deleteLater();
                        });
                    }
                });
            },
            Qt::BlockingQueuedConnection);
        return port;
    }

private:
    struct Pending {
        QByteArray buffer;
        qint64 uploadLeft = 0;
        qint64 downloadLeft = 0;
    };

    void respond(QTcpSocket* s, int status, const QByteArray& body, const QByteArray& extra = {},
                 qint64 length = -1) {
        s->write("HTTP/1.1 " + QByteArray::number(status) +
                 (status == 200 ? " OK" : " Unavailable") +
                 "\r\nContent-Length: " + QByteArray::number(length < 0 ? body.size() : length) +
                 "\r\n" + extra + "Connection: keep-alive\r\n\r\n" + body);
    }

    void pump(QTcpSocket* s) {
        Pending& p = pending_[s];
        static const QByteArray kChunk(64 * 1024, 'x');
        while (p.downloadLeft > 0 && s->bytesToWrite() < 256 * 1024) {
            const qint64 n = std::min<qint64>(p.downloadLeft, kChunk.size());
            s->write(kChunk.constData(), n);
            p.downloadLeft -= n;
        }
    }

    void serve(QTcpSocket* s) {
        Pending& p = pending_[s];
        p.buffer += s->readAll();
        for (;;) {
            if (p.uploadLeft > 0) {
                const qint64 n = std::min<qint64>(p.uploadLeft, p.buffer.size());
                p.buffer.remove(0, n);
                p.uploadLeft -= n;
                if (p.uploadLeft > 0) {
                    return;
                }
                respond(s, 200, {});
            }
            const auto end = p.buffer.indexOf("\r\n\r\n");
            if (end < 0) {
                return;
            }
            const QByteArray head = p.buffer.left(end);
            p.buffer.remove(0, end + 4);
            const QList<QByteArray> lines = head.split('\n');
            const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
            const QUrl url(QString::fromLatin1(requestLine.value(1)));
            qint64 contentLength = 0;
            for (const auto& l : lines) {
                if (l.toLower().startsWith("content-length:")) {
                    contentLength = l.mid(15).trimmed().toLongLong();
                }
            }
            const QString path = url.path();
            if (requestLine.value(0) == "POST" && path == "/__up") {
                p.uploadLeft = contentLength;
                if (contentLength == 0) {
                    respond(s, 200, {});
                }
                continue;
            }
            if (path == "/meta") {
                respond(s, 200,
                        R"({"colo": "FRA", "city": "Frankfurt", "asOrganization": "Loopback"})");
            } else if (path == "/cdn-cgi/trace") {
                respond(s, 200, "ip=127.0.0.1\ncolo=AMS\nloc=DE\nhttp=http/1.1\n");
            } else if (path == "/__down") {
                const qint64 bytes = QUrlQuery(url).queryItemValue("bytes").toLongLong();
                if (bytes == 0 && failPings) {
                    respond(s, 503, {});
                    continue;
                }
                respond(s, 200, {}, "Server-Timing: cfRequestDuration;dur=0.5\r\n", bytes);
                p.downloadLeft = bytes;
                pump(s);
            } else {
                respond(s, 404, {});
            }
        }
    }

    QTcpServer* server_ = nullptr;
    std::map<QTcpSocket*, Pending> pending_;
};

struct ServerThread {
    QThread thread;
    SpeedServer* server = new SpeedServer;
    quint16 port = 0;
    ServerThread() {
        server->moveToThread(&thread);
        QObject::connect(&thread, &QThread::finished, server, &QObject::deleteLater);
        thread.start();
        port = server->listen();
    }
    ~ServerThread() {
        thread.quit();
        thread.wait();
    }
    SpeedTestConfiguration config() const {
        SpeedTestConfiguration c;
        c.baseURL = QUrl(QString("http://127.0.0.1:%1/").arg(port));
        c.latencySamples = 4;
        c.transferDuration = 1.2;
        c.warmup = 0.3;
        c.streams = 2;
        c.downloadChunk = 3'000'000;
        c.uploadChunk = 600'000;
        return c;
    }
};

} // namespace

TEST(SpeedTestEngine, AWholeTestAgainstALocalServer) {
    ServerThread local;
    std::vector<SpeedTestProgress> seen;
    const auto result =
        SpeedTestEngine(local.config()).run(QString("Ethernet"), [&](const SpeedTestProgress& p) {
            seen.push_back(p);
        });
    ASSERT_TRUE(result);
    EXPECT_GT(result->downloadMbps, 0.0);
    EXPECT_GT(result->uploadMbps, 0.0);
    EXPECT_GT(result->bytesDownloaded, 3'000'000); // the streams re-issued their requests
    EXPECT_GT(result->bytesUploaded, 0);
    EXPECT_GE(result->idleLatency, 0.1);
    EXPECT_GE(result->jitter, 0.0);
    ASSERT_TRUE(result->server);
    EXPECT_EQ(result->server->colo, "FRA"); // meta wins, the trace fills in
    EXPECT_EQ(result->server->clientIP, "127.0.0.1");
    EXPECT_EQ(result->connection, "Ethernet");
    EXPECT_TRUE(result->downloadLatency.has_value());

    // Progress runs through the phases in order, one bar that never goes back.
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.front().phase, SpeedTestPhase::Latency);
    EXPECT_EQ(seen.back().phase, SpeedTestPhase::Upload);
    double before = 0;
    int downloadTicks = 0;
    for (const auto& p : seen) {
        EXPECT_GE(p.overallFraction() + 1e-9, before);
        before = p.overallFraction();
        downloadTicks += p.phase == SpeedTestPhase::Download && p.currentMbps ? 1 : 0;
    }
    EXPECT_GE(downloadTicks, 4); // sampled every 200 ms over 1.2 s
    EXPECT_EQ(seen.back().uploadMbps, result->uploadMbps);
}

TEST(SpeedTestEngine, UnreachableAndRefusedPingsSayWhy) {
    ServerThread local;
    SpeedTestConfiguration closed = local.config();
    closed.baseURL = QUrl("http://127.0.0.1:1/");
    try {
        SpeedTestEngine(closed).run(std::nullopt, {});
        FAIL() << "expected SpeedTestError";
    } catch (const SpeedTestError& e) {
        EXPECT_EQ(e.kind, SpeedTestError::Kind::Unreachable);
        EXPECT_TRUE(e.message().startsWith("Couldn't reach the speed test server. "))
            << e.message().toStdString();
    }
    local.server->failPings = true;
    try {
        SpeedTestEngine(local.config()).run(std::nullopt, {});
        FAIL() << "expected SpeedTestError";
    } catch (const SpeedTestError& e) {
        EXPECT_EQ(e.message(),
                  "Couldn't reach the speed test server. The server answered with an error.");
    }
}

TEST(SpeedTestEngine, CancellingEndsTheTestPromptly) {
    ServerThread local;
    std::atomic<bool> cancel = false;
    QElapsedTimer clock;
    clock.start();
    SpeedTestConfiguration c = local.config();
    c.transferDuration = 20; // far longer than the test may take
    const auto result = SpeedTestEngine(c).run(
        std::nullopt,
        [&](const SpeedTestProgress& p) {
            if (p.phase == SpeedTestPhase::Download && p.phaseFraction > 0) {
                cancel = true;
            }
        },
        &cancel);
    EXPECT_FALSE(result);
    EXPECT_LT(clock.elapsed(), 5000);
}
