#pragma once

#include <QElapsedTimer>
#include <QFutureWatcher>
#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>
#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace tarvik {

namespace job_detail {

// What a job's worker and the interface thread share; a new one for every run, so a report
// still on its way from an earlier run never reaches a later one.
template <typename Progress> struct State {
    std::atomic<bool> cancel = false;
    std::mutex mutex;
    std::optional<Progress> pending;
    bool scheduled = false;
    bool done = false;
    QElapsedTimer sinceDelivery;
};

} // namespace job_detail

// Where a job's work runs. The shared pool has a thread per core, and Qt draws images with it
// too: work that waits on the network, a child process or a bus would hold those threads while
// every other job, and the window's drawing, waited behind it. Such work runs on a thread of its
// own, as does work that must keep its pace behind a long scan (the monitor's sampling).
enum class JobThread { Shared, Own };

// What a job's work is given: whether it was asked to stop, and where to report how far it got.
template <typename Progress> class JobContext {
public:
    JobContext(std::shared_ptr<job_detail::State<Progress>> state, QPointer<QObject> owner,
               std::function<void(const Progress&)> onProgress)
        : state_(std::move(state)), owner_(std::move(owner)), onProgress_(std::move(onProgress)) {}

    bool cancelled() const { return state_->cancel.load(std::memory_order_relaxed); }
    // For the scanners and the cleaner, which look at a flag themselves.
    const std::atomic<bool>* cancelFlag() const { return &state_->cancel; }

    // From any thread. The newest report reaches the interface thread at most every 100 ms;
    // one that arrives sooner replaces the one waiting, so a report must say all it means
    // (a count, a fraction, the results so far), not what changed since the last.
    void report(Progress progress) {
        update([&progress](Progress& waiting) { waiting = std::move(progress); });
    }

    // From any thread: changes the report waiting to be delivered (a fresh one when none
    // waits), for progress that accumulates, such as the lines of a log since the last delivery.
    template <typename Change> void update(Change change) {
        if (!onProgress_) {
            return;
        }
        std::unique_lock lock(state_->mutex);
        if (!state_->pending) {
            state_->pending.emplace();
        }
        change(*state_->pending);
        if (state_->scheduled) {
            return;
        }
        state_->scheduled = true;
        const qint64 since =
            state_->sinceDelivery.isValid() ? state_->sinceDelivery.elapsed() : kEveryMs;
        const int delay = static_cast<int>(std::max<qint64>(0, kEveryMs - since));
        lock.unlock();
        QMetaObject::invokeMethod(
            owner_.data(),
            [state = state_, owner = owner_, onProgress = onProgress_, delay] {
                QTimer::singleShot(delay, owner.data(), [state, onProgress] {
                    std::unique_lock l(state->mutex);
                    state->scheduled = false;
                    if (state->done || !state->pending) {
                        return;
                    }
                    Progress p = std::move(*state->pending);
                    state->pending.reset();
                    state->sinceDelivery.start();
                    l.unlock();
                    onProgress(p);
                });
            },
            Qt::QueuedConnection);
    }

private:
    static constexpr qint64 kEveryMs = 100;
    std::shared_ptr<job_detail::State<Progress>> state_;
    QPointer<QObject> owner_;
    std::function<void(const Progress&)> onProgress_;
};

// One kind of work a screen's model runs off the interface thread: a fresh cancel flag for each
// run, progress passed to the interface thread at most every 100 ms (the last of it before the
// result), the result handed over there when the work ends, and nothing delivered once the owner
// is gone. The owner keeps the job as a
// member; destroying it cancels the work and waits for it.
template <typename Result, typename Progress = double> class BackgroundJob {
public:
    using Work = std::function<Result(JobContext<Progress>&)>;

    // `onProgress` may be empty for work that reports nothing.
    BackgroundJob(QObject* owner, std::function<void(const Progress&)> onProgress,
                  std::function<void(Result)> onDone, JobThread thread = JobThread::Shared)
        : owner_(owner), onProgress_(std::move(onProgress)) {
        if (thread == JobThread::Own) {
            own_ = std::make_unique<QThreadPool>();
            own_->setMaxThreadCount(1); // one run at a time; the thread ends when idle
        }
        QObject::connect(&watcher_, &QFutureWatcher<Result>::finished, owner,
                         [this, onDone = std::move(onDone)] {
                             // A report still waiting is handed over before the result (a log's
                             // last lines), and none after it.
                             std::optional<Progress> last;
                             {
                                 std::lock_guard lock(state_->mutex);
                                 state_->done = true;
                                 last.swap(state_->pending);
                             }
                             cancelled_ = state_->cancel.load();
                             if (last && onProgress_) {
                                 onProgress_(*last);
                             }
                             running_ = false;
                             onDone(watcher_.result());
                         });
    }
    ~BackgroundJob() {
        cancel();
        watcher_.waitForFinished();
    }
    BackgroundJob(const BackgroundJob&) = delete;
    BackgroundJob& operator=(const BackgroundJob&) = delete;

    // Until the result has been handed over: the worker may have ended a moment before.
    bool isRunning() const { return running_; }
    // The last run was asked to stop before it ended (known once it has).
    bool wasCancelled() const { return cancelled_; }

    // Runs `work` on a worker thread; false, and nothing starts, while a run is under way.
    bool start(Work work) {
        if (running_) {
            return false;
        }
        state_ = std::make_shared<job_detail::State<Progress>>();
        cancelled_ = false;
        running_ = true;
        JobContext<Progress> context(state_, owner_, onProgress_);
        auto run = [work = std::move(work), context]() mutable {
            return work(context);
        };
        watcher_.setFuture(own_ ? QtConcurrent::run(own_.get(), std::move(run))
                                : QtConcurrent::run(std::move(run)));
        return true;
    }
    void cancel() { state_->cancel = true; }

private:
    QPointer<QObject> owner_;
    std::function<void(const Progress&)> onProgress_;
    std::shared_ptr<job_detail::State<Progress>> state_ =
        std::make_shared<job_detail::State<Progress>>();
    bool cancelled_ = false;
    bool running_ = false;
    std::unique_ptr<QThreadPool> own_;
    QFutureWatcher<Result> watcher_;
};

} // namespace tarvik
