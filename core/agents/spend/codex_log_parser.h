#pragma once

#include "core/agents/spend/log_lines.h"
#include "core/agents/spend/token_usage.h"

#include <QByteArrayView>

namespace tarvik {

// Reads the token counts of one Codex session log ("sessions/…/*.jsonl"); use a new parser for
// each file and give it the lines in order.
//
// Codex logs running totals, not answers: each "token_count" event carries the session's totals
// so far, and the model comes from the "turn_context" lines before it. An answer's tokens are the
// growth of the totals since the previous event.
class CodexLogParser {
public:
    // What the lines worth parsing hold: the others need not be given to event().
    static const LogLines::Markers& markers();
    // The tokens this line adds, or none. `readableAfter`: bytes past the line's end that may be
    // read, as LogLines::forEach promises; with enough, the line is parsed where it is instead
    // of being copied first.
    std::optional<TokenUsageEvent> event(QByteArrayView line, std::size_t readableAfter = 0);

private:
    struct Totals {
        std::int64_t input = 0;
        std::int64_t cached = 0;
        std::int64_t output = 0;
    };
    QString model_ = QStringLiteral("unknown");
    std::optional<Totals> previous_;
};

} // namespace tarvik
