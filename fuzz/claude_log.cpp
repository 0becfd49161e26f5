// Claude Code's project logs, read as the spend estimate reads them: the file line by line,
// each line with a marker parsed where it lies, repeats told apart by their ids.
#include "core/agents/spend/claude_log_parser.h"
#include "core/agents/spend/log_lines.h"
#include "fuzz/spend_events.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::InputFile file(data, size);
    ClaudeLogParser parser;
    std::vector<TokenUsageEvent> events;
    LogLines::forEach(file.path(), ClaudeLogParser::markers(), [&](QByteArrayView line) {
        if (auto a = ClaudeLogParser::answer(line, LogLines::kReadableAfterLine)) {
            if (parser.firstTime(a->messageId, a->requestId)) {
                events.push_back(std::move(a->event));
            }
        }
    });
    // The whole input as one line with nothing readable after it: the copying path.
    ClaudeLogParser::answer(QByteArrayView(data, static_cast<qsizetype>(size)));
    fuzz::summarize(events);
    return 0;
}
