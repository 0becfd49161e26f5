#include "app/speedtest/speed_test_model.h"

#include <QMetaObject>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

namespace tarvik {

SpeedTestModel::SpeedTestModel(std::function<SpeedTestConfiguration()> configuration,
                               SpeedTestHistoryStore store, QObject* parent)
    : QObject(parent), config_(std::move(configuration)), store_(std::move(store)),
      history_(store_.load()) {}

SpeedTestModel::~SpeedTestModel() {
    cancel();
    watcher_.waitForFinished();
}

void SpeedTestModel::start(const std::optional<QString>& connection) {
    if (running_) {
        return;
    }
    running_ = true;
    error_.clear();
    last_.reset();
    server_.reset();
    progress_ = {};
    cancel_ = std::make_shared<std::atomic<bool>>(false);
    emit changed();
    QPointer<SpeedTestModel> self(this);
    watcher_.setFuture(QtConcurrent::run([self, config = config_(), connection, flag = cancel_] {
        std::optional<SpeedTestResult> result;
        QString error;
        try {
            result = SpeedTestEngine(config).run(
                connection,
                [self](const SpeedTestProgress& p) {
                    QMetaObject::invokeMethod(
                        self.data(),
                        [self, p] {
                            if (self) {
                                self->progress_ = p;
                                if (p.server) {
                                    self->server_ = p.server;
                                }
                                emit self->progressChanged();
                            }
                        },
                        Qt::QueuedConnection);
                },
                flag.get());
        } catch (const SpeedTestError& e) {
            error = e.message();
        }
        QMetaObject::invokeMethod(
            self.data(),
            [self, result, error] {
                if (!self) {
                    return;
                }
                self->running_ = false;
                self->error_ = error;
                if (result) {
                    self->last_ = result;
                    self->server_ = result->server;
                    self->updateHistory(self->store_.add(*result));
                }
                emit self->changed();
                emit self->finished();
            },
            Qt::QueuedConnection);
    }));
}

void SpeedTestModel::cancel() {
    if (cancel_) {
        *cancel_ = true;
    }
}

void SpeedTestModel::deleteResult(const QUuid& id) {
    updateHistory(store_.remove(id));
    emit changed();
}

void SpeedTestModel::clearHistory() {
    updateHistory(store_.clear());
    emit changed();
}

void SpeedTestModel::updateHistory(std::optional<std::vector<SpeedTestResult>> history) {
    if (history) {
        history_ = std::move(*history);
    } else {
        error_ = tr("Couldn't save the speed test history.");
    }
}

} // namespace tarvik
