#pragma once

// The project's speed-test server on a thread of its own, on 127.0.0.1, for the engine's, the
// command line's and the screen's tests.
#include "core/speedtest/speed_test_math.h"
#include "tools/speed_server/speed_server.h"

#include <QThread>

namespace tarvik::test {

struct ServerThread {
    QThread thread;
    tools::SpeedServer* server = new tools::SpeedServer;
    tools::SpeedServerKnobs& knobs = server->knobs;
    quint16 port = 0;

    ServerThread() {
        server->moveToThread(&thread);
        QObject::connect(&thread, &QThread::finished, server, &QObject::deleteLater);
        thread.start();
        QMetaObject::invokeMethod(
            server, [this] { port = server->listen(QHostAddress::LocalHost); },
            Qt::BlockingQueuedConnection);
    }
    ~ServerThread() {
        thread.quit();
        thread.wait();
    }

    // Connections the server still holds open.
    int openConnections() {
        int n = 0;
        QMetaObject::invokeMethod(
            server, [this, &n] { n = server->openConnections(); }, Qt::BlockingQueuedConnection);
        return n;
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
