#pragma once

#include "core/monitor/machine_summary.h"

#include <QFutureWatcher>
#include <QObject>

namespace tarvik {

// Smart Scan's data: the machine summary, read off the interface thread.
class OverviewModel : public QObject {
    Q_OBJECT
public:
    explicit OverviewModel(MachineSummaryOptions options, QObject* parent = nullptr);

    const MachineSummary& summary() const { return summary_; }
    bool hasSummary() const { return hasSummary_; }
    bool isLoading() const { return watcher_.isRunning(); }

public slots:
    void refresh();

signals:
    void summaryChanged();
    void loadingChanged(bool loading);

private:
    MachineSummaryOptions options_;
    MachineSummary summary_;
    bool hasSummary_ = false;
    QFutureWatcher<MachineSummary> watcher_;
};

} // namespace tarvik
