#include "app/shell/background_job.h"
#include "tests/support/shared_pool_taken.h"
#include "tests/support/wait.h"

#include <QThread>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

using namespace tarvik;

TEST(BackgroundJob, ProgressArrivesInOrderAndNeverAfterTheResult) {
    QObject owner;
    std::vector<int> seen;
    std::optional<int> result;
    int reportsAfterResult = 0;
    BackgroundJob<int, int> job(
        &owner,
        [&](const int& p) {
            seen.push_back(p);
            reportsAfterResult += result ? 1 : 0;
        },
        [&](int r) { result = r; });
    ASSERT_TRUE(job.start([](JobContext<int>& context) {
        for (int i = 1; i <= 20000; ++i) {
            context.report(i);
        }
        return 7;
    }));
    EXPECT_TRUE(job.isRunning());
    EXPECT_FALSE(job.start([](JobContext<int>&) { return 0; })); // one run at a time
    ASSERT_TRUE(test::waitUntil([&] { return result.has_value(); }));
    EXPECT_FALSE(job.isRunning());
    EXPECT_EQ(*result, 7);
    EXPECT_FALSE(job.wasCancelled());
    // Reports are coalesced, never reordered, and none is delivered once the result is in.
    EXPECT_LT(seen.size(), 20000u);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    test::pumpEventsFor(300);
    EXPECT_EQ(reportsAfterResult, 0);

    // A second run starts fresh: not cancelled, its own reports.
    seen.clear();
    result.reset();
    ASSERT_TRUE(job.start([](JobContext<int>& context) {
        context.report(-1);
        QThread::msleep(250); // long enough for the report to be delivered before the end
        return context.cancelled() ? 0 : 1;
    }));
    ASSERT_TRUE(test::waitUntil([&] { return result.has_value(); }));
    EXPECT_EQ(*result, 1);
    EXPECT_EQ(seen, std::vector<int>{-1});
}

TEST(BackgroundJob, CancelReachesTheWorkAndIsRemembered) {
    QObject owner;
    std::optional<int> result;
    BackgroundJob<int> job(
        &owner, [](const double&) {}, [&](int r) { result = r; });
    std::atomic<bool> started = false;
    job.start([&started](JobContext<double>& context) {
        started = true;
        int rounds = 0;
        while (!context.cancelFlag()->load()) {
            QThread::msleep(1);
            ++rounds;
        }
        return rounds;
    });
    ASSERT_TRUE(test::waitUntil([&] { return started.load(); }));
    job.cancel();
    ASSERT_TRUE(test::waitUntil([&] { return result.has_value(); }));
    EXPECT_TRUE(job.wasCancelled());
}

TEST(BackgroundJob, GoingAwayStopsTheWorkAndDeliversNothing) {
    bool delivered = false;
    std::atomic<bool> stopped = false;
    {
        QObject owner;
        BackgroundJob<int> job(
            &owner, [&](const double&) { delivered = true; }, [&](int) { delivered = true; });
        job.start([&stopped](JobContext<double>& context) {
            while (!context.cancelled()) {
                context.report(0.5);
                QThread::msleep(1);
            }
            stopped = true;
            return 0;
        });
        QThread::msleep(50);
    } // the job cancels and waits for the work here
    EXPECT_TRUE(stopped);
    test::pumpEventsFor(300); // reports still queued find their owner gone
    EXPECT_FALSE(delivered);
}

TEST(BackgroundJob, AccumulatedProgressArrivesWholeEvenAtTheEnd) {
    QObject owner;
    std::vector<int> lines;
    bool done = false;
    BackgroundJob<bool, std::vector<int>> job(
        &owner,
        [&](const std::vector<int>& batch) {
            lines.insert(lines.end(), batch.begin(), batch.end());
        },
        [&](bool) { done = true; });
    job.start([](JobContext<std::vector<int>>& context) {
        for (int i = 0; i < 5000; ++i) {
            context.update([i](std::vector<int>& waiting) { waiting.push_back(i); });
        }
        return true;
    });
    ASSERT_TRUE(test::waitUntil([&] { return done; }));
    ASSERT_EQ(lines.size(), 5000u); // none lost, the last ones included
    for (int i = 0; i < 5000; ++i) {
        ASSERT_EQ(lines[static_cast<std::size_t>(i)], i);
    }
}

TEST(BackgroundJob, WorkOnItsOwnThreadNeverWaitsBehindTheSharedPool) {
    QObject owner;
    test::SharedPoolTaken taken;
    std::optional<int> own;
    std::optional<int> queued;
    BackgroundJob<int> ownJob(
        &owner, {}, [&](int r) { own = r; }, JobThread::Own);
    BackgroundJob<int> sharedJob(&owner, {}, [&](int r) { queued = r; });
    sharedJob.start([](JobContext<double>&) { return 2; });
    ownJob.start([](JobContext<double>&) { return 1; });
    EXPECT_TRUE(test::waitUntil([&] { return own.has_value(); }));
    EXPECT_FALSE(queued.has_value()); // still behind the taken threads
    taken.release();
    EXPECT_TRUE(test::waitUntil([&] { return queued.has_value(); }));
}
