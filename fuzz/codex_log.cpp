// Codex's session logs, read as the spend estimate reads them (running totals turned into each
// answer's tokens), and the rate limits the newest log carries.
#include "core/agents/limits/codex_usage.h"
#include "core/agents/spend/codex_log_parser.h"
#include "core/agents/spend/log_lines.h"
#include "fuzz/spend_events.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::InputFile file(data, size);
    CodexLogParser parser;
    std::vector<TokenUsageEvent> events;
    LogLines::forEach(file.path(), CodexLogParser::markers(), [&](QByteArrayView line) {
        if (auto e = parser.event(line, LogLines::kReadableAfterLine)) {
            events.push_back(std::move(*e));
        }
    });
    CodexLogParser{}.event(QByteArrayView(data, static_cast<qsizetype>(size)));
    fuzz::summarize(events);
    LogLines::forEach(file.path(),
                      [](QByteArrayView line) { CodexUsage::limitsFromLine(line.toByteArray()); });
    return 0;
}
