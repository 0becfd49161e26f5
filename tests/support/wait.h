#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <functional>

namespace tarvik::test {

// Runs the event loop until `done` holds or `ms` pass; whether it holds. The limit only stops a
// broken test from hanging: a passing one returns as soon as the work ends.
inline bool waitUntil(const std::function<bool()>& done, int ms = 20000) {
    QElapsedTimer t;
    t.start();
    while (!done() && t.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2); // leaves the core to the workers the test waits for
    }
    return done();
}

// Runs the event loop for `ms`, for checking that something does not happen.
inline void pumpEventsFor(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
}

} // namespace tarvik::test
