#pragma once

#include "app/shell/background_job.h"
#include "core/speedtest/speed_test_engine.h"
#include "core/speedtest/speed_test_history.h"

#include <QObject>
#include <functional>

namespace tarvik {

// The Speed Test screen's state: the test running now with its live progress, the last result
// or error, and the history.
class SpeedTestModel : public QObject {
    Q_OBJECT
public:
    // `configuration` is asked at the start of every test, so a changed setting applies.
    SpeedTestModel(std::function<SpeedTestConfiguration()> configuration,
                   SpeedTestHistoryStore store, QObject* parent = nullptr);
    ~SpeedTestModel() override;

    bool isRunning() const { return job_.isRunning(); }
    const SpeedTestProgress& progress() const { return progress_; }
    const std::optional<SpeedTestResult>& lastResult() const { return last_; }
    const QString& error() const { return error_; }
    const std::vector<SpeedTestResult>& history() const { return history_; }
    const std::optional<SpeedTestServer>& server() const { return server_; }

public slots:
    void start(const std::optional<QString>& connection);
    void cancel();
    void deleteResult(const QUuid& id);
    void clearHistory();

signals:
    void changed();
    void progressChanged();
    void finished();

private:
    struct Outcome {
        std::optional<SpeedTestResult> result;
        QString error;
    };
    // The history as the store left it, or the reason it could not be changed.
    void updateHistory(std::optional<std::vector<SpeedTestResult>> history);

    std::function<SpeedTestConfiguration()> config_;
    SpeedTestHistoryStore store_;
    SpeedTestProgress progress_;
    std::optional<SpeedTestServer> server_;
    std::optional<SpeedTestResult> last_;
    QString error_;
    std::vector<SpeedTestResult> history_;
    BackgroundJob<Outcome, SpeedTestProgress> job_;
};

} // namespace tarvik
