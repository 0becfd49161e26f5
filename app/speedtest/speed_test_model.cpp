#include "app/speedtest/speed_test_model.h"

namespace tarvik {

SpeedTestModel::SpeedTestModel(std::function<SpeedTestConfiguration()> configuration,
                               SpeedTestHistoryStore store, QObject* parent)
    : QObject(parent), config_(std::move(configuration)), store_(std::move(store)),
      history_(store_.load()), job_(
                                   this,
                                   [this](const SpeedTestProgress& p) {
                                       progress_ = p;
                                       if (p.server) {
                                           server_ = p.server;
                                       }
                                       emit progressChanged();
                                   },
                                   [this](Outcome outcome) {
                                       error_ = outcome.error;
                                       if (outcome.result) {
                                           last_ = outcome.result;
                                           server_ = outcome.result->server;
                                           updateHistory(store_.add(*outcome.result));
                                       }
                                       emit changed();
                                       emit finished();
                                   },
                                   JobThread::Own) {}

SpeedTestModel::~SpeedTestModel() = default;

void SpeedTestModel::start(const std::optional<QString>& connection) {
    if (job_.isRunning()) {
        return;
    }
    error_.clear();
    last_.reset();
    server_.reset();
    progress_ = {};
    job_.start([config = config_(), connection](JobContext<SpeedTestProgress>& job) {
        Outcome outcome;
        std::optional<SpeedTestServer> server;
        try {
            outcome.result = SpeedTestEngine(config).run(
                connection,
                [&](SpeedTestProgress p) {
                    // Reports may be merged on their way; each carries the server once known.
                    server = p.server ? p.server : server;
                    p.server = server;
                    job.report(std::move(p));
                },
                job.cancelFlag());
        } catch (const SpeedTestError& e) {
            outcome.error = e.message();
        }
        return outcome;
    });
    emit changed();
}

void SpeedTestModel::cancel() {
    job_.cancel();
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
