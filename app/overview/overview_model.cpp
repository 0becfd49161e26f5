#include "app/overview/overview_model.h"

#include "app/junk/junk_model.h"

#include <utility>

namespace tarvik {

OverviewModel::OverviewModel(MachineSummaryOptions options, JunkModel* junk, QObject* parent)
    : QObject(parent), options_(std::move(options)), junk_(junk),
      job_(this, {}, [this](MachineSummary s) {
          summary_ = std::move(s);
          hasSummary_ = true;
          emit loadingChanged(isLoading());
          emit summaryChanged();
      }) {
    if (junk_ != nullptr) {
        connect(junk_, &JunkModel::resultsChanged, this, &OverviewModel::junkChanged);
        connect(junk_, &JunkModel::scanStarted, this, [this] { emit loadingChanged(true); });
        connect(junk_, &JunkModel::scanFinished, this, [this] {
            emit junkChanged();
            emit loadingChanged(isLoading());
        });
    }
}

OverviewModel::~OverviewModel() = default;

bool OverviewModel::isMeasuringJunk() const {
    return junk_ != nullptr && junk_->isScanning();
}

std::optional<std::int64_t> OverviewModel::junkBytes() const {
    if (junk_ == nullptr || junk_->isScanning() || !junk_->hasScanned() || junk_->wasCancelled()) {
        return std::nullopt;
    }
    std::int64_t total = 0;
    for (const auto& r : junk_->results()) {
        total += info(r.category).selectedByDefault ? r.totalSize : 0;
    }
    return total;
}

void OverviewModel::refresh() {
    refreshSummary();
    scanJunk();
}

void OverviewModel::refreshSummary() {
    if (!job_.isRunning()) {
        // statvfs on a home folder that sits on a network share can block; keep it off the window.
        job_.start(
            [options = options_](JobContext<double>&) { return readMachineSummary(options); });
        emit loadingChanged(true);
    }
    if (junk_ != nullptr && !junk_->hasScanned()) {
        scanJunk();
    }
}

void OverviewModel::scanJunk() {
    if (junk_ != nullptr && !junk_->isBusy()) {
        junk_->scan();
    }
}

} // namespace tarvik
