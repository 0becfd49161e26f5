#include "core/speedtest/speed_test_math.h"

#include <gtest/gtest.h>

using namespace tarvik;

TEST(SpeedTestMath, MedianJitterRatesAndServerTiming) {
    EXPECT_FALSE(SpeedTestMath::median({}));
    EXPECT_EQ(SpeedTestMath::median({3, 1, 2}), 2.0);
    EXPECT_EQ(SpeedTestMath::median({4, 1, 3, 2}), 2.5);
    EXPECT_DOUBLE_EQ(SpeedTestMath::jitter({10}), 0.0);
    EXPECT_DOUBLE_EQ(SpeedTestMath::jitter({10, 20, 15}), 7.5);
    EXPECT_DOUBLE_EQ(SpeedTestMath::mbps(0, 10), 0.0);
    EXPECT_DOUBLE_EQ(SpeedTestMath::mbps(125'000'000, 10), 100.0);
    EXPECT_DOUBLE_EQ(SpeedTestMath::mbps(1000, 0), 0.0);

    EXPECT_EQ(SpeedTestMath::serverDuration(QString("cfRequestDuration;dur=12.5")), 12.5);
    EXPECT_EQ(SpeedTestMath::serverDuration(QString("a;desc=x, b;dur=3")), 3.0);
    EXPECT_FALSE(SpeedTestMath::serverDuration(QString("a;dur")));
    EXPECT_FALSE(SpeedTestMath::serverDuration(QString("a;DUR=4")));
    EXPECT_FALSE(SpeedTestMath::serverDuration(std::nullopt));

    EXPECT_DOUBLE_EQ(SpeedTestMath::pingMilliseconds(12'000'000, 2.0), 10.0);
    EXPECT_DOUBLE_EQ(SpeedTestMath::pingMilliseconds(2'050'000, 2.0), 0.1); // never below 0.1 ms
}

TEST(ThroughputMeter, TheWarmupNeverCountsAndOneSampleStillGivesAFigure) {
    ThroughputMeter meter(2.0);
    EXPECT_DOUBLE_EQ(meter.result(), 0.0);
    meter.record(1.0, 1'000'000); // warming up, fast slow-start burst
    meter.record(2.0, 3'000'000);
    meter.record(3.0, 15'500'000);
    meter.record(4.0, 28'000'000);
    // From the sample at 2 s to the last: 25 MB in 2 s = 100 Mbps.
    EXPECT_DOUBLE_EQ(meter.result(), 100.0);
    EXPECT_DOUBLE_EQ(meter.current(1.0), SpeedTestMath::mbps(12'500'000, 1.0));
    EXPECT_EQ(meter.totalBytes(), 28'000'000);

    ThroughputMeter single(2.0);
    single.record(0.5, 1'250'000);
    EXPECT_DOUBLE_EQ(single.result(), SpeedTestMath::mbps(1'250'000, 0.5));

    ThroughputMeter early(5.0); // no sample after the warm-up: from the first one
    early.record(1.0, 1'000'000);
    early.record(2.0, 2'000'000);
    EXPECT_DOUBLE_EQ(early.result(), SpeedTestMath::mbps(1'000'000, 1.0));
}

TEST(AcknowledgedUpload, CountsTheKernelsAcknowledgedBytesAcrossConnections) {
    // A connection from before the phase (a download's, closing) counts only what it adds.
    AcknowledgedUpload upload({{7, 900}});
    EXPECT_EQ(upload.update(0, {{7, 900}}), 0);
    // Two upload connections: 3 MB handed over, 1.2 MB of it acknowledged so far.
    EXPECT_EQ(upload.update(3'000'000, {{7, 900}, {11, 500'000}, {12, 700'000}}), 1'200'000);
    // One closes: it keeps what it had; a new one takes its place.
    EXPECT_EQ(upload.update(5'000'000, {{12, 1'500'000}, {13, 100'000}}), 2'100'000);

    // With the warm-up left out, the meter sees what the server acknowledged, whatever the
    // send queues hold.
    AcknowledgedUpload counted({});
    ThroughputMeter meter(2.0);
    meter.record(1.0, counted.update(4'000'000, {{1, 2'500'000}}));
    meter.record(2.0, counted.update(6'000'000, {{1, 4'000'000}}));
    meter.record(4.0, counted.update(11'000'000, {{1, 9'000'000}})); // 5 MB in 2 s
    EXPECT_DOUBLE_EQ(meter.result(), 20.0);
}

TEST(AcknowledgedUpload, WithoutAConnectionToSeeItCountsWhatWasHandedOverAndNeverGoesBack) {
    AcknowledgedUpload upload({});
    EXPECT_EQ(upload.update(1'000'000, {}), 1'000'000); // through a proxy, say
    EXPECT_EQ(upload.update(2'000'000, {}), 2'000'000);
    // A first reading below what was already counted holds the total.
    EXPECT_EQ(upload.update(2'500'000, {{4, 1'800'000}}), 2'000'000);
    EXPECT_EQ(upload.update(2'500'000, {{4, 2'400'000}}), 2'400'000);
}

TEST(SpeedTestProgress, OneBarAcrossThePhasesAndErrorsInTheUsersWords) {
    SpeedTestProgress p;
    p.phaseFraction = 0.5;
    EXPECT_DOUBLE_EQ(p.overallFraction(), 0.05);
    p.phase = SpeedTestPhase::Download;
    EXPECT_DOUBLE_EQ(p.overallFraction(), 0.325);
    p.phase = SpeedTestPhase::Upload;
    p.phaseFraction = 2.0; // clamped
    EXPECT_DOUBLE_EQ(p.overallFraction(), 1.0);
    EXPECT_EQ(title(SpeedTestPhase::Latency), "Ping");
    EXPECT_EQ(rawValue(SpeedTestPhase::Upload), "upload");

    EXPECT_EQ((SpeedTestError{SpeedTestError::Kind::Unreachable, SpeedTestPhase::Latency,
                              QString("Check your internet connection.")})
                  .message(),
              "Couldn't reach the speed test server. Check your internet connection.");
    EXPECT_EQ((SpeedTestError{SpeedTestError::Kind::NoData, SpeedTestPhase::Upload, std::nullopt})
                  .message(),
              "The upload test didn't transfer any data.");
    EXPECT_EQ((SpeedTestError{SpeedTestError::Kind::NoData, SpeedTestPhase::Download,
                              QString("Connection refused")})
                  .message(),
              "The download test didn't transfer any data. Connection refused");
    const SpeedTestConfiguration defaults;
    EXPECT_EQ(defaults.streams, 6);
    EXPECT_EQ(defaults.latencySamples, 20);
    EXPECT_TRUE(defaults.baseURL.toString().endsWith('/'));
}
