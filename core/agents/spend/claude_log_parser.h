#pragma once

#include "core/agents/spend/answer_keys.h"
#include "core/agents/spend/log_lines.h"
#include "core/agents/spend/token_usage.h"

#include <QByteArrayView>
#include <string_view>

namespace tarvik {

// Reads the token counts of Claude Code's project logs ("projects/…/*.jsonl"), one JSON object
// a line; the lines that matter carry a "message" with a "usage".
//
// Claude Code writes the same answer more than once (in a session and again in the sessions
// resumed from it), so one parser is kept for a whole scan: an answer seen before, by message id
// and request id, is not counted again.
class ClaudeLogParser {
public:
    // One answer of a line, with the ids that tell its repeats (as written, UTF-8; valid until
    // the next answer() on the same thread). Without a message id an answer always counts.
    struct Answer {
        std::string_view messageId;
        std::string_view requestId;
        TokenUsageEvent event;
    };
    // What a line with usage holds: the lines without it need not be given to answer().
    static const LogLines::Markers& markers();
    // The line's usage, or none: not usage, malformed, undated or a synthetic message. Needs no
    // parser state, so files can be read on several threads. `readableAfter`: bytes past the
    // line's end that may be read, as LogLines::forEach promises; with enough, the line is
    // parsed where it is instead of being copied first.
    static std::optional<Answer> answer(QByteArrayView line, std::size_t readableAfter = 0);
    // `expected`: about how many answers firstTime() will be asked about.
    explicit ClaudeLogParser(std::size_t expected = 0) { seen_.reserve(expected); }

    // Whether an answer with these ids is new to this parser (and remembers it).
    bool firstTime(std::string_view messageId, std::string_view requestId);

    // answer() and firstTime() together: none for repeats too.
    std::optional<TokenUsageEvent> event(QByteArrayView line);

private:
    AnswerKeys seen_;
};

} // namespace tarvik
