#include "core/speedtest/speed_test_history.h"
#include "core/speedtest/speed_test_result.h"
#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

SpeedTestResult result(double down, double up, double idle, double jitter,
                       std::optional<double> dl = std::nullopt,
                       std::optional<double> ul = std::nullopt) {
    SpeedTestResult r;
    r.date = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);
    r.downloadMbps = down;
    r.uploadMbps = up;
    r.idleLatency = idle;
    r.jitter = jitter;
    r.downloadLatency = dl;
    r.uploadLatency = ul;
    return r;
}

} // namespace

TEST(BufferbloatGrade, FromTheGrowthOfLatencyUnderLoad) {
    const SpeedTestResult b = result(100, 20, 20, 2, 45, 70);
    EXPECT_EQ(b.loadedLatency(), 70.0);
    EXPECT_EQ(b.bufferbloat(), BufferbloatGrade::B);
    EXPECT_EQ(result(1, 1, 25, 1, 20).bufferbloat(), BufferbloatGrade::A); // loaded below idle
    EXPECT_EQ(result(1, 1, 20, 1, std::nullopt, 35).loadedLatency(), 35.0);
    EXPECT_FALSE(result(1, 1, 20, 1).bufferbloat());
    EXPECT_EQ(bufferbloatGrade(10, 39.999), BufferbloatGrade::A);
    EXPECT_EQ(bufferbloatGrade(10, 40), BufferbloatGrade::B);
    EXPECT_EQ(bufferbloatGrade(10, 70), BufferbloatGrade::C);
    EXPECT_EQ(bufferbloatGrade(10, 210), BufferbloatGrade::D);
    EXPECT_EQ(bufferbloatGrade(10, 410), BufferbloatGrade::F);
    EXPECT_EQ(rawValue(BufferbloatGrade::F), "F");
    EXPECT_EQ(summary(BufferbloatGrade::F), summary(BufferbloatGrade::D));
    EXPECT_EQ(summary(BufferbloatGrade::A), "Latency barely changes under load.");
    EXPECT_LT(BufferbloatGrade::A, BufferbloatGrade::F);
}

TEST(SpeedTestUseCase, VerdictsWithExactBounds) {
    EXPECT_EQ(verdict(SpeedTestUseCase::Browsing, result(10, 1, 100, 1)),
              Verdict::Ok); // 100 is not below 100
    EXPECT_EQ(verdict(SpeedTestUseCase::Browsing, result(10, 1, 99.9, 1)), Verdict::Great);
    EXPECT_EQ(verdict(SpeedTestUseCase::Browsing, result(1.9, 1, 10, 1)), Verdict::Poor);
    EXPECT_EQ(verdict(SpeedTestUseCase::Gaming, result(12, 1, 20, 5)),
              Verdict::Great); // L falls back to p
    EXPECT_EQ(verdict(SpeedTestUseCase::Gaming, result(12, 1, 20, 5, 100)), Verdict::Ok);
    EXPECT_EQ(verdict(SpeedTestUseCase::UhdStreaming, result(50, 1, 20, 5)), Verdict::Great);
    EXPECT_EQ(verdict(SpeedTestUseCase::UhdStreaming, result(49.9, 1, 20, 5)), Verdict::Ok);
    EXPECT_EQ(verdict(SpeedTestUseCase::HdStreaming, result(4.99, 1, 20, 5)), Verdict::Poor);
    EXPECT_EQ(verdict(SpeedTestUseCase::VideoCalls, result(10, 5, 49, 19, 149)), Verdict::Great);
    EXPECT_EQ(verdict(SpeedTestUseCase::VideoCalls, result(10, 5, 49, 19, 150)), Verdict::Ok);
    EXPECT_EQ(verdict(SpeedTestUseCase::VideoCalls, result(10, 1.9, 49, 19)), Verdict::Poor);
    EXPECT_EQ(verdict(SpeedTestUseCase::CloudBackup, result(1, 10, 1, 1)), Verdict::Ok);
    EXPECT_EQ(title(SpeedTestUseCase::CloudBackup), "Uploads & backups");
    EXPECT_EQ(rawValue(SpeedTestUseCase::UhdStreaming), "uhdStreaming");
    EXPECT_EQ(verdictFromRaw(2), Verdict::Great);
    EXPECT_FALSE(verdictFromRaw(3));
    EXPECT_EQ(title(Verdict::Ok), "OK");
}

TEST(SpeedFormat, DecimalsFollowTheSize) {
    EXPECT_EQ(SpeedFormat::mbps(99.999), "100.0");
    EXPECT_EQ(SpeedFormat::mbps(9.5), "9.50");
    EXPECT_EQ(SpeedFormat::mbps(100), "100");
    EXPECT_EQ(SpeedFormat::mbps(250.4), "250");
    EXPECT_EQ(SpeedFormat::milliseconds(10), "10 ms");
    EXPECT_EQ(SpeedFormat::milliseconds(9.4), "9.4 ms");
}

TEST(SpeedTestServer, MetaTraceMergeAndLocation) {
    const auto meta = SpeedTestServer::fromMeta(
        R"({"colo": "FRA", "city": "Frankfurt", "country": "DE", "clientIp": "203.0.113.7",
            "asOrganization": "Example ISP", "asn": 64500, "httpProtocol": "HTTP/2"})");
    ASSERT_TRUE(meta);
    EXPECT_EQ(meta->isp, "Example ISP");
    EXPECT_EQ(meta->asn, 64500);
    EXPECT_EQ(meta->locationText(), "Frankfurt (FRA)");
    EXPECT_EQ(SpeedTestServer::fromMeta(R"({"colo": {"iata": "LHR", "name": "London"}})")->colo,
              "LHR");
    EXPECT_FALSE(SpeedTestServer::fromMeta("[1, 2]"));
    EXPECT_FALSE(SpeedTestServer::fromMeta("<html>"));
    const SpeedTestServer trace =
        SpeedTestServer::fromTrace("fl=29f1\nh=speed.cloudflare.com\nip=203.0.113.7\nts=1.2\ncolo="
                                   "AMS\nloc=NL\nhttp=http/3\nx=a=b\n");
    EXPECT_EQ(trace.colo, "AMS");
    EXPECT_EQ(trace.country, "NL");
    EXPECT_EQ(trace.httpProtocol, "http/3");
    EXPECT_EQ(trace.locationText(), "AMS");
    const SpeedTestServer merged = trace.filled(*meta);
    EXPECT_EQ(merged.colo, "AMS"); // the receiver wins
    EXPECT_EQ(merged.city, "Frankfurt");
    EXPECT_FALSE(SpeedTestServer{}.locationText());
    EXPECT_EQ(SpeedTestServer::fromJson(meta->toJson()), *meta);
}

TEST(SpeedTestHistoryStore, KeepsTheNewestHundredAndNeverLosesWhatItCouldNotRead) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/Tarvik/speedtests.json";
    SpeedTestHistoryStore store(path);
    EXPECT_TRUE(store.load().empty()); // missing
    std::vector<SpeedTestResult> many;
    for (int i = 0; i < 101; ++i) {
        SpeedTestResult r = result(i, i, 10, 1, 20.0 + i);
        r.connection = "Wi-Fi";
        r.server = SpeedTestServer::fromTrace("colo=FRA");
        many.push_back(r);
    }
    for (auto it = many.rbegin(); it != many.rend(); ++it) {
        ASSERT_TRUE(store.add(*it)); // newest added last, so many[0] ends first
    }
    const auto back = store.load();
    ASSERT_EQ(back.size(), 100u);
    EXPECT_EQ(back[0].id, many[0].id);
    EXPECT_EQ(back[99].downloadMbps, 99.0);
    EXPECT_EQ(back[5].date, many[5].date);
    EXPECT_EQ(back[5].downloadLatency, 25.0);
    EXPECT_FALSE(back[5].uploadLatency);
    EXPECT_EQ(back[5].server->colo, "FRA");
    EXPECT_EQ(back[5].connection, "Wi-Fi");
    const auto fewer = store.remove(many[1].id);
    ASSERT_TRUE(fewer);
    EXPECT_EQ(fewer->size(), 99u);
    EXPECT_EQ((*fewer)[1].id, many[2].id);

    // Five good records and one bad: the five are shown, and a new test keeps all six.
    QJsonArray entries;
    for (int i = 0; i < 5; ++i) {
        entries.append(many[static_cast<std::size_t>(i)].toJson());
    }
    entries.insert(2, QJsonObject{{"id", "not-a-uuid"}});
    test::writeFile(path, QJsonDocument(entries).toJson());
    EXPECT_EQ(store.load().size(), 5u);
    const auto added = store.add(many[50]);
    ASSERT_TRUE(added);
    EXPECT_EQ(added->size(), 6u);
    EXPECT_EQ(QJsonDocument::fromJson(test::readAll(path)).array().size(), 7);

    // Not JSON at all: kept aside, never overwritten in place.
    test::writeFile(path, "[{\"id\": ");
    EXPECT_TRUE(store.load().empty());
    ASSERT_TRUE(store.add(many[60]));
    EXPECT_EQ(test::readAll(path + ".damaged"), "[{\"id\": ");
    EXPECT_EQ(store.load().size(), 1u);

    // A folder where the file should be: the change reports the failure.
    QDir().mkpath(dir.path() + "/blocked/speedtests.json");
    EXPECT_FALSE(SpeedTestHistoryStore(dir.path() + "/blocked/speedtests.json").add(many[0]));
}
