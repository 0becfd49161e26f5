#pragma once

// A real HTTP server on 127.0.0.1 that speaks the speed-test endpoints ("meta",
// "cdn-cgi/trace", "__down?bytes=N" with a Server-Timing header, "__up"), on a thread of its
// own, for the engine's and the command line's tests.
#include "core/speedtest/speed_test_math.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QUrlQuery>
#include <atomic>
#include <map>

namespace tarvik::test {

class SpeedServer : public QObject {
public:
    // Knobs for failures, set before a test starts.
    std::atomic<bool> failPings = false;
    std::atomic<bool> stallDownloads = false;  // headers, then never a byte
    std::atomic<bool> refuseDownloads = false; // hang up without answering
    std::atomic<qint64> cutDownloadsAfter = 0; // hang up mid-body after this many bytes

    // Connections the server still holds open.
    int openConnections() {
        int n = 0;
        QMetaObject::invokeMethod(
            this, [this, &n] { n = static_cast<int>(pending_.size()); },
            Qt::BlockingQueuedConnection);
        return n;
    }

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
                        pending_[s];
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
        qint64 sent = 0;
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
            p.sent += n;
            if (cutDownloadsAfter > 0 && p.sent >= cutDownloadsAfter) {
                s->abort();
                return;
            }
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
            if (path == "/meta" && !head.contains("\nReferer: ")) {
                respond(s, 200, {}); // as the real service: nothing without the page's Referer
            } else if (path == "/meta") {
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
                if (bytes > 0 && refuseDownloads) {
                    s->abort();
                    return;
                }
                respond(s, 200, {}, "Server-Timing: cfRequestDuration;dur=0.5\r\n", bytes);
                p.downloadLeft = stallDownloads ? 0 : bytes;
                p.sent = 0;
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
    // A test of about three seconds against this server: few pings, short phases, two streams.
    SpeedTestConfiguration shortTest() const {
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

} // namespace tarvik::test
