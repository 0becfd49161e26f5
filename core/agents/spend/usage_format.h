#pragma once

#include "core/agents/spend/usage_period.h"

#include <QString>
#include <cstdint>

namespace tarvik::UsageFormat {

// "$0.42" below a thousand dollars; from there whole dollars with thousands separated by
// commas, "$1,234".
QString dollars(double value);
// A token count in a short form: "999", "2K", "2.5M", "1.2B".
QString tokens(std::int64_t count);
// The note for log lines too long to read, or nothing when there were none.
QString skippedLines(std::int64_t count);
// What a period without any usage in the logs shows: "Claude Code and Codex logged no usage
// today."
QString noUsage(UsagePeriod period);

} // namespace tarvik::UsageFormat
