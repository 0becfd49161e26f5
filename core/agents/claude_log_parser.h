#pragma once

#include "core/agents/log_lines.h"
#include "core/agents/token_usage.h"

#include <QByteArrayView>
#include <string>
#include <unordered_set>

namespace tarvik {

// Reads the token counts of Claude Code's project logs ("projects/…/*.jsonl"), one JSON object
// a line; the lines that matter carry a "message" with a "usage".
//
// Claude Code writes the same answer more than once (in a session and again in the sessions
// resumed from it), so one parser is kept for a whole scan: an answer seen before, by message id
// and request id, is not counted again.
class ClaudeLogParser {
public:
    // One answer of a line, with the key that tells its repeats ("message id:request id" as
    // written, UTF-8; empty when the line has no message id, which then always counts).
    struct Answer {
        std::string key;
        TokenUsageEvent event;
    };
    // What a line with usage holds; the others are passed over unparsed.
    static const LogLines::Markers& markers();
    // The line's usage, or none: not usage, malformed, undated or a synthetic message. Needs no
    // parser state, so files can be read on several threads.
    static std::optional<Answer> answer(QByteArrayView line);
    // Whether an answer with this key is new to this parser (and remembers it).
    bool firstTime(std::string&& key);

    // answer() and firstTime() together: none for repeats too.
    std::optional<TokenUsageEvent> event(QByteArrayView line);

private:
    std::unordered_set<std::string> seen_;
};

} // namespace tarvik
