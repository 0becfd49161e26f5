#pragma once

#include "app/shell/background_job.h"
#include "core/cleanup/junk_scanner.h"
#include "core/monitor/machine_summary.h"

#include <QObject>
#include <functional>
#include <optional>

namespace tarvik {

// Smart Scan's data: the machine summary, read off the interface thread.
class OverviewModel : public QObject {
    Q_OBJECT
public:
    // `junkOptions` says where System Junk looks; without it there is no junk figure.
    explicit OverviewModel(MachineSummaryOptions options,
                           std::function<JunkScanner::Options()> junkOptions = {},
                           QObject* parent = nullptr);
    ~OverviewModel() override;

    const MachineSummary& summary() const { return summary_; }
    bool hasSummary() const { return hasSummary_; }
    // What a default System Junk clean would remove; empty until measured.
    std::optional<std::int64_t> junkBytes() const { return junkBytes_; }
    bool isLoading() const { return job_.isRunning(); }

public slots:
    void refresh();

signals:
    void summaryChanged();
    void loadingChanged(bool loading);

private:
    struct Result {
        MachineSummary summary;
        std::optional<std::int64_t> junk;
    };
    MachineSummaryOptions options_;
    std::function<JunkScanner::Options()> junkOptions_;
    MachineSummary summary_;
    std::optional<std::int64_t> junkBytes_;
    bool hasSummary_ = false;
    BackgroundJob<Result> job_;
};

} // namespace tarvik
