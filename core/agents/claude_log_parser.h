#pragma once

#include "core/agents/token_usage.h"

#include <QByteArrayView>
#include <QSet>

namespace tarvik {

// Reads the token counts of Claude Code's project logs ("projects/…/*.jsonl"), one JSON object
// a line; the lines that matter carry a "message" with a "usage".
//
// Claude Code writes the same answer more than once (in a session and again in the sessions
// resumed from it), so one parser is kept for a whole scan: an answer seen before, by message id
// and request id, is not counted again.
class ClaudeLogParser {
public:
    // The line's usage, or none: not usage, malformed, undated, a synthetic message, or a repeat.
    std::optional<TokenUsageEvent> event(QByteArrayView line);

private:
    QSet<QString> seen_;
};

} // namespace tarvik
