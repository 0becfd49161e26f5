#include "app/junk/junk_model.h"

#include "core/cleanup/cleanup_record.h"
#include "core/cleanup/cleanup_run.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"

#include <QMetaObject>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>
#include <algorithm>

namespace tarvik {

JunkModel::Dependencies JunkModel::forCurrentUser(const Preferences& preferences) {
    return {[&preferences] { return CapabilitySettings::junkScanner(preferences); },
            [] { return Cleaner(SafetyGuard::forCurrentUser()); },
            FreeSpaceTimeline::defaultFilePath()};
}

JunkModel::JunkModel(Preferences& preferences, Dependencies dependencies, QObject* parent)
    : QObject(parent), prefs_(preferences), deps_(std::move(dependencies)) {
    connect(&scanWatcher_, &QFutureWatcher<void>::finished, this, [this] {
        scanning_ = false;
        emit scanFinished();
    });
    connect(&cleanWatcher_, &QFutureWatcher<CleanReport>::finished, this, [this] {
        cleaning_ = false;
        report_ = cleanWatcher_.result();
        // Removed items leave their categories; the totals follow.
        const QSet<QString> removed = report_->removedIDs();
        for (auto& r : results_) {
            std::erase_if(r.items,
                          [&](const CleanableItem& i) { return removed.contains(i.id()); });
            r.totalSize = 0;
            for (const auto& i : r.items) {
                r.totalSize += i.size;
            }
        }
        selected_.subtract(removed);
        emit cleanFinished();
        emit selectionChanged();
    });
}

JunkModel::~JunkModel() {
    if (cancel_) {
        *cancel_ = true;
    }
    scanWatcher_.waitForFinished();
    cleanWatcher_.waitForFinished();
}

const JunkScanResult* JunkModel::resultFor(JunkCategory category) const {
    for (const auto& r : results_) {
        if (r.category == category) {
            return &r;
        }
    }
    return nullptr;
}

bool JunkModel::isCategorySelected(JunkCategory category) const {
    const JunkScanResult* r = resultFor(category);
    return r != nullptr && !r->items.empty() &&
           std::all_of(r->items.begin(), r->items.end(),
                       [this](const CleanableItem& i) { return selected_.contains(i.id()); });
}

void JunkModel::setCategorySelected(JunkCategory category, bool on) {
    if (const JunkScanResult* r = resultFor(category)) {
        for (const auto& i : r->items) {
            if (on) {
                selected_.insert(i.id());
            } else {
                selected_.remove(i.id());
            }
        }
        emit selectionChanged();
    }
}

void JunkModel::setItemSelected(const QString& itemId, bool on) {
    if (on) {
        selected_.insert(itemId);
    } else {
        selected_.remove(itemId);
    }
    emit selectionChanged();
}

int JunkModel::selectedCount() const {
    int n = 0;
    for (const auto& r : results_) {
        for (const auto& i : r.items) {
            n += selected_.contains(i.id()) ? 1 : 0;
        }
    }
    return n;
}

std::int64_t JunkModel::selectedSize() const {
    std::int64_t n = 0;
    for (const auto& r : results_) {
        for (const auto& i : r.items) {
            n += selected_.contains(i.id()) ? i.size : 0;
        }
    }
    return n;
}

RemovalMode JunkModel::junkMode() const {
    return CapabilitySettings::removalMode(prefs_, pref::kJunkRemovalMode);
}

void JunkModel::scan() {
    if (scanning_ || cleaning_) {
        return;
    }
    scanning_ = true;
    results_.clear();
    selected_.clear();
    report_.reset();
    cancel_ = std::make_shared<std::atomic<bool>>(false);
    JunkScanner::Options options = deps_.scannerOptions();
    options.cancel = cancel_.get();
    emit scanStarted();
    emit selectionChanged();
    QPointer<JunkModel> self(this);
    auto flag = cancel_; // keeps the flag alive for the worker
    scanWatcher_.setFuture(QtConcurrent::run([self, options, flag] {
        JunkScanner(options).scan({kAllJunkCategories.begin(), kAllJunkCategories.end()},
                                  [self](const JunkScanResult& result) {
                                      // Each category reaches the screen as soon as it is complete.
                                      QMetaObject::invokeMethod(
                                          self.data(),
                                          [self, result] {
                                              if (!self) {
                                                  return;
                                              }
                                              self->results_.push_back(result);
                                              if (info(result.category).selectedByDefault) {
                                                  for (const auto& i : result.items) {
                                                      self->selected_.insert(i.id());
                                                  }
                                              }
                                              emit self->categoryScanned(result.category);
                                              emit self->selectionChanged();
                                          },
                                          Qt::QueuedConnection);
                                  });
    }));
}

void JunkModel::cancel() {
    if (cancel_) {
        *cancel_ = true;
    }
}

void JunkModel::clean() {
    if (scanning_ || cleaning_ || selectedCount() == 0) {
        return;
    }
    std::vector<JunkScanResult> chosen;
    for (const auto& r : results_) {
        JunkScanResult c{r.category, {}, 0};
        for (const auto& i : r.items) {
            if (selected_.contains(i.id())) {
                c.items.push_back(i);
            }
        }
        chosen.push_back(std::move(c));
    }
    cleaning_ = true;
    report_.reset();
    cancel_ = std::make_shared<std::atomic<bool>>(false);
    auto flag = cancel_;
    QPointer<JunkModel> self(this);
    const auto groups = junkCleanupGroups(chosen, junkMode());
    // The exclusions as they are now: an unreadable list stops every removal with its reason.
    const Cleaner cleaner = deps_.cleaner().withExclusions(
        CapabilitySettings::exclusions(prefs_, deps_.scannerOptions().home));
    cleanWatcher_.setFuture(
        QtConcurrent::run([self, groups, flag, cleaner, path = deps_.timelinePath] {
            FreeSpaceTimeline timeline(path);
            return runCleanup(
                cleaner, groups, QStringLiteral("System Junk"),
                [self](double f) {
                    QMetaObject::invokeMethod(
                        self.data(),
                        [self, f] {
                            if (self)
                                emit self->cleanProgress(f);
                        },
                        Qt::QueuedConnection);
                },
                flag.get(), &timeline);
        }));
}

} // namespace tarvik
