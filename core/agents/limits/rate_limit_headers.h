#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <optional>
#include <utility>

namespace tarvik::RateLimitHeaders {

// Seconds to wait when an answer says "slow down": 429, or 403 with
// "x-ratelimit-remaining: 0". From "retry-after" (seconds or an HTTP date), else
// "x-ratelimit-reset" (a Unix time), else 300; always between 30 s and an hour. Header names
// are matched in any case.
std::optional<double> retryAfter(int status,
                                 const QList<std::pair<QByteArray, QByteArray>>& headers,
                                 const QDateTime& now);

} // namespace tarvik::RateLimitHeaders
