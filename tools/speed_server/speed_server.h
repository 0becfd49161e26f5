#pragma once

// A small HTTP server that speaks the speed-test service's endpoints ("meta", "cdn-cgi/trace",
// "__down?bytes=N" with a Server-Timing header, "__up"), with switches for the ways the real
// service misbehaves or has changed. The tests run it on 127.0.0.1; the shaped-link benchmark
// runs it as a program of its own in a network namespace.
#include "tools/hostile_http/hostile_answer.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QObject>
#include <atomic>
#include <map>

class QTcpServer;
class QTcpSocket;

namespace tarvik::tools {

struct SpeedServerKnobs {
    std::atomic<bool> failPings = false;       // pings answer 503
    std::atomic<bool> stallDownloads = false;  // headers, then never a byte
    std::atomic<bool> refuseDownloads = false; // hang up without answering
    std::atomic<qint64> cutDownloadsAfter = 0; // hang up mid-body after this many bytes
    std::atomic<int> answerDelayMs = 0;        // every answer waits this long
    // Downloads of this many bytes or more are refused with 403, as the service does for
    // anonymous requests; 0 refuses none.
    std::atomic<qint64> forbidDownloadsFrom = 100'000'000;
    std::atomic<int> rateLimitTransfers = 0; // the next N transfers are answered with 429
    std::atomic<int> retryAfterSeconds = -1; // sent with each 429; negative sends none
    // The newer header with several metrics ("cfL4;desc=…, cfSpeedEdge;dur=…, cfSpeedWorker;
    // dur=…") instead of a single "cfRequestDuration;dur=…".
    std::atomic<bool> severalTimingMetrics = false;
    std::atomic<int> serverMilliseconds = 0; // the processing time Server-Timing reports
    std::atomic<bool> coloAsObject = false;  // newer "meta": colo as {"iata": …}
    // Upload bodies are read at most this many bytes a second, all connections together, as
    // over a slow link; 0 reads them as they come.
    std::atomic<qint64> uploadReadRate = 0;
    // Each new connection's receive buffers (the kernel's and Qt's) in bytes, fixed, so that
    // unread upload bytes wait at the uploader; 0 leaves them to grow, to megabytes on loopback.
    std::atomic<int> receiveBuffer = 0;
    // Every answer is sent this way instead (hostile_answer.h)…
    std::atomic<HostileAnswer> hostileAnswers = HostileAnswer::None;
    // …or only the answers to downloads and uploads.
    std::atomic<HostileAnswer> hostileTransfers = HostileAnswer::None;
};

class SpeedServer : public QObject {
public:
    SpeedServerKnobs knobs;

    // Starts listening; 0 picks a free port. Returns the port, or 0 when it can't listen.
    quint16 listen(const QHostAddress& address, quint16 port = 0);
    int openConnections() const { return static_cast<int>(connections_.size()); }
    // Requests for a transfer ("__down" with bytes, "__up") answered so far, 429s included.
    qint64 transferRequests() const { return transferRequests_; }
    // Upload body bytes read so far.
    qint64 uploadBytesRead() const { return uploadBytesRead_; }

private:
    struct Connection {
        QByteArray buffer;
        qint64 uploadLeft = 0;
        qint64 downloadLeft = 0;
        qint64 sent = 0;
        bool waiting = false;   // a slow answer is on its way; later requests queue behind it
        int uploadStatus = 200; // answered once the whole upload body is in
        QByteArray uploadHeaders;
        bool throttled = false; // a read is due once the upload rate allows it
        HostileAnswer uploadHostility = HostileAnswer::None; // how the upload is answered
        bool taken = false; // by an endless answer: nothing more is read from it
    };

    void accept();
    void serve(QTcpSocket* socket);
    void serveBuffered(QTcpSocket* socket);
    void answer(QTcpSocket* socket, const QByteArray& head);
    // Sends an answer, the hostile way when `hostility` says so.
    void send(QTcpSocket* socket, HostileAnswer hostility, int status, const QByteArray& body,
              const QByteArray& extra = {});
    void pump(QTcpSocket* socket);
    // Counts a transfer request; true (with the headers to send) when it gets a 429.
    bool rateLimited(QByteArray& headers);
    void finishUpload(QTcpSocket* socket, Connection& connection);
    // How many upload bytes may be read now under knobs.uploadReadRate.
    qint64 uploadAllowance(qint64 wanted);
    void uploadRead(qint64 bytes);

    QTcpServer* server_ = nullptr;
    std::map<QTcpSocket*, Connection> connections_;
    std::atomic<qint64> transferRequests_ = 0;
    std::atomic<qint64> uploadBytesRead_ = 0;
    // The upload rate's token bucket: bytes that may be read, refilled from this clock.
    double uploadTokens_ = 0;
    QElapsedTimer uploadClock_;
};

} // namespace tarvik::tools
