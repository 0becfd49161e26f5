#pragma once

// Every thread of the shared pool taken by work that waits until it is let go, as a long scan or
// a brew upgrade takes them; let go at the latest when the object goes.
#include <QFuture>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>
#include <atomic>
#include <vector>

namespace tarvik::test {

class SharedPoolTaken {
public:
    SharedPoolTaken() {
        for (int i = 0; i < QThreadPool::globalInstance()->maxThreadCount(); ++i) {
            taken_.push_back(QtConcurrent::run([this] {
                while (!released_) {
                    QThread::msleep(5);
                }
            }));
        }
    }
    ~SharedPoolTaken() { release(); }
    SharedPoolTaken(const SharedPoolTaken&) = delete;
    SharedPoolTaken& operator=(const SharedPoolTaken&) = delete;

    void release() {
        released_ = true;
        for (auto& f : taken_) {
            f.waitForFinished();
        }
    }

private:
    std::atomic<bool> released_ = false;
    std::vector<QFuture<void>> taken_;
};

} // namespace tarvik::test
