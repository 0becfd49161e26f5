// What the speed-test service says about itself: the "meta" document, the plain-text trace and
// the Server-Timing header of each answer; and the server as it is shown and kept in history.
#include "core/speedtest/speed_test_math.h"
#include "core/speedtest/speed_test_server.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input = fuzz::bytes(data, size);
    const SpeedTestServer trace = SpeedTestServer::fromTrace(QString::fromUtf8(input));
    const SpeedTestServer server = SpeedTestServer::fromMeta(input).value_or(trace).filled(trace);
    server.locationText();
    SpeedTestServer::fromJson(server.toJson());
    if (const auto ms = SpeedTestMath::serverDuration(QString::fromUtf8(input))) {
        SpeedTestMath::pingMilliseconds(5'000'000, ms);
    }
    return 0;
}
