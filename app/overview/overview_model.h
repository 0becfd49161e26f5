#pragma once

#include "app/shell/background_job.h"
#include "core/monitor/machine_summary.h"

#include <QObject>
#include <optional>

namespace tarvik {

class JunkModel;

// Smart Scan's data: the machine summary, read off the interface thread, and System Junk's own
// scan, so the figure shown here is the one System Junk lists and follows every clean there.
class OverviewModel : public QObject {
    Q_OBJECT
public:
    // Without `junk` there is no junk figure.
    explicit OverviewModel(MachineSummaryOptions options, JunkModel* junk = nullptr,
                           QObject* parent = nullptr);
    ~OverviewModel() override;

    const MachineSummary& summary() const { return summary_; }
    bool hasSummary() const { return hasSummary_; }
    // What a default System Junk clean would remove; empty until a scan has ended.
    std::optional<std::int64_t> junkBytes() const;
    bool isMeasuringJunk() const;
    bool isLoading() const { return job_.isRunning() || isMeasuringJunk(); }

public slots:
    // Reads the summary again and scans for junk again.
    void refresh();
    // Reads the summary again (free space and uptime move); scans for junk only if it never has.
    void refreshSummary();

signals:
    void summaryChanged();
    void junkChanged();
    void loadingChanged(bool loading);

private:
    void scanJunk();

    MachineSummaryOptions options_;
    JunkModel* junk_;
    MachineSummary summary_;
    bool hasSummary_ = false;
    BackgroundJob<MachineSummary> job_;
};

} // namespace tarvik
