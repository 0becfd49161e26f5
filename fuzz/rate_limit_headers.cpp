// The headers of a usage service that says "slow down": how long Tarvik waits before it asks
// again. The input's first line is the status, each further line a "name: value" header.
#include "core/agents/limits/rate_limit_headers.h"

#include "core/agents/limits/retry_after.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QList<QByteArray> lines = fuzz::bytes(data, size).split('\n');
    const int status = lines.value(0).trimmed().toInt();
    QList<std::pair<QByteArray, QByteArray>> headers;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines[i].indexOf(':');
        headers.append(
            {lines[i].left(colon), colon < 0 ? QByteArray() : lines[i].mid(colon + 1).trimmed()});
        retryAfterSeconds(QString::fromLatin1(headers.back().second), fuzz::now());
    }
    for (int answered : {status, 429, 403}) {
        RateLimitHeaders::retryAfter(answered, headers, fuzz::now());
    }
    return 0;
}
