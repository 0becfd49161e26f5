#include "core/agents/limits/rate_limit_headers.h"

#include "core/agents/limits/retry_after.h"

#include <QString>
#include <algorithm>

namespace tarvik::RateLimitHeaders {
namespace {

std::optional<QByteArray> header(const QList<std::pair<QByteArray, QByteArray>>& headers,
                                 const QByteArray& lowerName) {
    for (const auto& [name, value] : headers) {
        if (name.toLower() == lowerName) {
            return value.trimmed();
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<double> retryAfter(int status,
                                 const QList<std::pair<QByteArray, QByteArray>>& headers,
                                 const QDateTime& now) {
    if (status == 403) {
        if (header(headers, "x-ratelimit-remaining") != QByteArray("0")) {
            return std::nullopt;
        }
    } else if (status != 429) {
        return std::nullopt;
    }
    double wait = 300;
    if (const auto value = header(headers, "retry-after")) {
        wait = retryAfterSeconds(QString::fromLatin1(*value), now).value_or(300);
    } else if (const auto reset = header(headers, "x-ratelimit-reset")) {
        bool ok = false;
        const double at = reset->toDouble(&ok);
        wait = ok ? at - static_cast<double>(now.toMSecsSinceEpoch()) / 1000.0 : 300;
    }
    return std::clamp(wait, 30.0, 3600.0);
}

} // namespace tarvik::RateLimitHeaders
