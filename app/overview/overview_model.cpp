#include "app/overview/overview_model.h"

#include <utility>

namespace tarvik {

OverviewModel::OverviewModel(MachineSummaryOptions options,
                             std::function<JunkScanner::Options()> junkOptions, QObject* parent)
    : QObject(parent), options_(std::move(options)), junkOptions_(std::move(junkOptions)),
      job_(this, {}, [this](Result r) {
          summary_ = std::move(r.summary);
          junkBytes_ = r.junk;
          hasSummary_ = true;
          emit loadingChanged(false);
          emit summaryChanged();
      }) {}

OverviewModel::~OverviewModel() = default;

void OverviewModel::refresh() {
    if (job_.isRunning()) {
        return;
    }
    // statvfs on a home folder that sits on a network share can block; keep it off the window.
    std::optional<JunkScanner::Options> junk;
    if (junkOptions_) {
        junk = junkOptions_();
    }
    job_.start([options = options_, junk](JobContext<double>& job) mutable {
        Result r{readMachineSummary(options), std::nullopt};
        if (junk) {
            junk->cancel = job.cancelFlag();
            std::int64_t total = 0;
            for (const auto& c :
                 JunkScanner(*junk).scan({kAllJunkCategories.begin(), kAllJunkCategories.end()})) {
                total += info(c.category).selectedByDefault ? c.totalSize : 0;
            }
            r.junk = total;
        }
        return r;
    });
    emit loadingChanged(true);
}

} // namespace tarvik
