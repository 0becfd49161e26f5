#include "tools/speed_server/speed_server.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>

namespace tarvik::tools {
namespace {

QByteArray reason(int status) {
    switch (status) {
    case 200:
        return "OK";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 429:
        return "Too Many Requests";
    default:
        return "Service Unavailable";
    }
}

void respond(QTcpSocket* s, int status, const QByteArray& body, const QByteArray& extra = {},
             qint64 length = -1) {
    s->write("HTTP/1.1 " + QByteArray::number(status) + ' ' + reason(status) +
             "\r\nContent-Length: " + QByteArray::number(length < 0 ? body.size() : length) +
             "\r\n" + extra + "Connection: keep-alive\r\n\r\n" + body);
}

} // namespace

quint16 SpeedServer::listen(const QHostAddress& address, quint16 port) {
    server_ = new QTcpServer(this);
    if (!server_->listen(address, port)) {
        return 0;
    }
    connect(server_, &QTcpServer::newConnection, this, &SpeedServer::accept);
    return server_->serverPort();
}

void SpeedServer::accept() {
    while (QTcpSocket* s = server_->nextPendingConnection()) {
        connections_[s];
        if (const int bytes = knobs.receiveBuffer; bytes > 0) {
            s->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, bytes);
            s->setReadBufferSize(bytes); // Qt's own buffer, which would otherwise take it all
        }
        connect(s, &QTcpSocket::readyRead, this, [this, s] { serve(s); });
        connect(s, &QTcpSocket::bytesWritten, this, [this, s] { pump(s); });
        connect(s, &QTcpSocket::disconnected, this, [this, s] {
            connections_.erase(s);
            s->deleteLater();
        });
    }
}

void SpeedServer::pump(QTcpSocket* s) {
    const auto it = connections_.find(s);
    if (it == connections_.end()) {
        return;
    }
    Connection& c = it->second;
    static const QByteArray kChunk(64 * 1024, 'x');
    const qint64 cut = knobs.cutDownloadsAfter;
    while (c.downloadLeft > 0 && s->bytesToWrite() < 512 * 1024) {
        qint64 n = std::min<qint64>(c.downloadLeft, kChunk.size());
        if (cut > 0) {
            n = std::min(n, cut - c.sent);
        }
        s->write(kChunk.constData(), n);
        c.downloadLeft -= n;
        c.sent += n;
        if (cut > 0 && c.sent >= cut) {
            s->disconnectFromHost(); // what was written still goes out, the rest never does
            return;
        }
    }
    if (c.downloadLeft == 0 && !c.waiting && !c.buffer.isEmpty()) {
        serveBuffered(s); // a request that came in while the body was still going out
    }
}

void SpeedServer::serve(QTcpSocket* s) {
    const auto it = connections_.find(s);
    if (it == connections_.end()) {
        return;
    }
    Connection& c = it->second;
    if (c.taken) {
        s->readAll();
        return;
    }
    // Upload bodies are read into one scratch buffer and dropped, never kept.
    static thread_local char scratch[256 * 1024];
    while (c.uploadLeft > 0 && c.buffer.isEmpty() && s->bytesAvailable() > 0) {
        const qint64 allowed = uploadAllowance(std::min<qint64>(c.uploadLeft, sizeof scratch));
        if (allowed < 1) {
            // The rest waits in the socket's buffers, and once they are full, at the uploader.
            if (!c.throttled) {
                c.throttled = true;
                QTimer::singleShot(5, s, [this, s] {
                    if (const auto found = connections_.find(s); found != connections_.end()) {
                        found->second.throttled = false;
                        serve(s);
                    }
                });
            }
            return;
        }
        const qint64 n = s->read(scratch, allowed);
        if (n <= 0) {
            break;
        }
        uploadRead(n);
        c.uploadLeft -= n;
        if (c.uploadLeft == 0) {
            finishUpload(s, c);
        }
    }
    c.buffer += s->readAll();
    serveBuffered(s);
}

void SpeedServer::serveBuffered(QTcpSocket* s) {
    // An answer may hang up, which forgets the connection: look it up again every time.
    for (auto it = connections_.find(s); it != connections_.end(); it = connections_.find(s)) {
        Connection& c = it->second;
        if (c.waiting || c.downloadLeft > 0 || c.taken) {
            return;
        }
        if (c.uploadLeft > 0) {
            // Bytes that came in with the request's headers: few, read at once but charged.
            const qint64 n = std::min<qint64>(c.uploadLeft, c.buffer.size());
            c.buffer.remove(0, n);
            uploadRead(n);
            c.uploadLeft -= n;
            if (c.uploadLeft > 0) {
                return;
            }
            finishUpload(s, c);
        }
        const auto end = c.buffer.indexOf("\r\n\r\n");
        if (end < 0) {
            return;
        }
        const QByteArray head = c.buffer.left(end);
        c.buffer.remove(0, end + 4);
        if (knobs.answerDelayMs > 0) {
            c.waiting = true;
            QTimer::singleShot(knobs.answerDelayMs.load(), s, [this, s, head] {
                const auto found = connections_.find(s);
                if (found == connections_.end()) {
                    return;
                }
                found->second.waiting = false;
                answer(s, head);
                serveBuffered(s);
            });
            return;
        }
        answer(s, head);
    }
}

void SpeedServer::send(QTcpSocket* s, HostileAnswer hostility, int status, const QByteArray& body,
                       const QByteArray& extra) {
    if (hostility == HostileAnswer::None) {
        respond(s, status, body, extra);
        return;
    }
    sendHostile(s, hostility, status, extra, body);
    connections_.at(s).taken = endless(hostility);
}

void SpeedServer::finishUpload(QTcpSocket* s, Connection& c) {
    send(s, c.uploadHostility, c.uploadStatus, {}, c.uploadHeaders);
    c.uploadStatus = 200;
    c.uploadHeaders.clear();
}

qint64 SpeedServer::uploadAllowance(qint64 wanted) {
    const qint64 rate = knobs.uploadReadRate;
    if (rate <= 0) {
        return wanted;
    }
    if (!uploadClock_.isValid()) {
        uploadClock_.start();
    }
    // Refilled by the time since the last look, holding at most 50 ms' worth.
    const double refill = static_cast<double>(rate) * 1e-9 * uploadClock_.nsecsElapsed();
    uploadClock_.restart();
    uploadTokens_ = std::min(uploadTokens_ + refill, rate / 20.0);
    return std::min(wanted, static_cast<qint64>(uploadTokens_));
}

void SpeedServer::uploadRead(qint64 bytes) {
    uploadBytesRead_ += bytes;
    if (knobs.uploadReadRate > 0) {
        uploadTokens_ -= static_cast<double>(bytes); // below zero: later reads repay it
    }
}

bool SpeedServer::rateLimited(QByteArray& headers) {
    ++transferRequests_;
    int left = knobs.rateLimitTransfers.load();
    while (left > 0 && !knobs.rateLimitTransfers.compare_exchange_weak(left, left - 1)) {
    }
    if (left <= 0) {
        return false;
    }
    const int wait = knobs.retryAfterSeconds;
    headers = wait < 0 ? QByteArray() : "Retry-After: " + QByteArray::number(wait) + "\r\n";
    return true;
}

void SpeedServer::answer(QTcpSocket* s, const QByteArray& head) {
    Connection& c = connections_.at(s);
    const QList<QByteArray> lines = head.split('\n');
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    const QUrl url(QString::fromLatin1(requestLine.value(1)));
    qint64 contentLength = 0;
    bool referer = false;
    for (const auto& l : lines) {
        const QByteArray lower = l.toLower();
        if (lower.startsWith("content-length:")) {
            contentLength = l.mid(15).trimmed().toLongLong();
        }
        referer = referer || lower.startsWith("referer:");
    }
    const QString path = url.path();
    const bool upload = requestLine.value(0) == "POST" && path == "/__up";
    const qint64 bytes =
        path == "/__down" ? QUrlQuery(url).queryItemValue(QStringLiteral("bytes")).toLongLong() : 0;
    HostileAnswer hostility = knobs.hostileAnswers;
    if (hostility == HostileAnswer::None && (upload || bytes > 0)) {
        hostility = knobs.hostileTransfers;
    }
    if (upload) {
        // The body is read either way, so that the connection stays usable.
        if (rateLimited(c.uploadHeaders)) {
            c.uploadStatus = 429;
        }
        c.uploadHostility = hostility;
        c.uploadLeft = contentLength;
        if (contentLength == 0) {
            finishUpload(s, c);
        }
        return;
    }
    if (path == "/meta") {
        // As the service does: nothing without its own page as the Referer.
        const QByteArray colo = knobs.coloAsObject
                                    ? R"({"iata": "FRA", "lat": 50.03, "city": "Frankfurt"})"
                                    : R"("FRA")";
        send(s, hostility, 200,
             referer
                 ? R"({"colo": )" + colo + R"(, "city": "Frankfurt", "asOrganization": "Loopback"})"
                 : QByteArray());
    } else if (path == "/cdn-cgi/trace") {
        send(s, hostility, 200, "ip=127.0.0.1\ncolo=AMS\nloc=DE\nhttp=http/1.1\n");
    } else if (path == "/__down") {
        if (hostility != HostileAnswer::None) {
            send(s, hostility, 200, QByteArray(std::min<qint64>(bytes, 64 * 1024), 'x'),
                 "Server-Timing: cfRequestDuration;dur=0\r\n");
            return;
        }
        if (bytes == 0 && knobs.failPings) {
            respond(s, 503, {});
            return;
        }
        if (bytes > 0) {
            if (QByteArray headers; rateLimited(headers)) {
                respond(s, 429, {}, headers);
                return;
            }
            if (knobs.refuseDownloads) {
                s->abort();
                return;
            }
            const qint64 forbidFrom = knobs.forbidDownloadsFrom;
            if (forbidFrom > 0 && bytes >= forbidFrom) {
                respond(s, 403, {});
                return;
            }
        }
        const QByteArray ms = QByteArray::number(knobs.serverMilliseconds.load());
        const QByteArray timing =
            knobs.severalTimingMetrics
                ? R"(cfL4;desc="?proto=TCP&rtt=312&min_rtt=250&rtt_var=41&sent=4&recv=5&lost=0")"
                  ", cfSpeedEdge;dur=" +
                      ms + ", cfSpeedWorker;dur=0"
                : "cfRequestDuration;dur=" + ms;
        respond(s, 200, {}, "Server-Timing: " + timing + "\r\n", bytes);
        c.downloadLeft = knobs.stallDownloads ? 0 : bytes;
        c.sent = 0;
        pump(s);
    } else {
        respond(s, 404, {});
    }
}

} // namespace tarvik::tools
