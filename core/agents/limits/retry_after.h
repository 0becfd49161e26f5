#pragma once

// The HTTP "Retry-After" header: a number of seconds, or a date in the HTTP format
// ("Sun, 22 Nov 2026 08:49:37 GMT").
#include <QDateTime>
#include <QString>
#include <optional>

namespace tarvik {

// Seconds to wait from `now`; none when the value is neither form. A date in the past gives 0.
std::optional<double> retryAfterSeconds(const QString& value, const QDateTime& now);

} // namespace tarvik
