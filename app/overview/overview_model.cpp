#include "app/overview/overview_model.h"

#include <QtConcurrent/QtConcurrentRun>
#include <utility>

namespace tarvik {

OverviewModel::OverviewModel(MachineSummaryOptions options, QObject* parent)
    : QObject(parent), options_(std::move(options)) {
    connect(&watcher_, &QFutureWatcher<MachineSummary>::finished, this, [this] {
        summary_ = watcher_.result();
        hasSummary_ = true;
        emit loadingChanged(false);
        emit summaryChanged();
    });
}

void OverviewModel::refresh() {
    if (watcher_.isRunning()) {
        return;
    }
    // statvfs on a home folder that sits on a network share can block; keep it off the window.
    watcher_.setFuture(
        QtConcurrent::run([options = options_] { return readMachineSummary(options); }));
    emit loadingChanged(true);
}

} // namespace tarvik
