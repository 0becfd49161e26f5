// What the agents' usage services answer, and the sign-in files the agents leave: each reader
// gets every input, so one corpus serves them all.
#include "core/agents/limits/claude_usage.h"
#include "core/agents/limits/codex_usage.h"
#include "core/agents/limits/copilot_usage.h"
#include "core/agents/limits/openrouter_usage.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

namespace {

// A report is read to be shown: its words are where odd numbers and dates come out.
void show(const std::optional<AgentUsageReport>& report) {
    if (report) {
        describe(*report, fuzz::now());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input = fuzz::bytes(data, size);
    const QDateTime now = fuzz::now();

    const auto claude = ClaudeUsage::credentials(input);
    show(ClaudeUsage::report(input, claude.value_or(ClaudeUsage::Credentials{}), now));
    if (claude) {
        ClaudeUsage::planName(claude->rateLimitTier, claude->subscription);
    }
    CodexUsage::credentials(input);
    show(CodexUsage::report(input, now));
    CopilotUsage::pluginToken(input);
    show(CopilotUsage::report(input, now));
    // OpenRouter answers twice (the key, then the credits): the input's first line is the one,
    // the rest the other, and the whole input serves as both.
    const qsizetype line = input.indexOf('\n');
    show(OpenRouterUsage::report(input.left(line), line < 0 ? input : input.mid(line + 1), now));
    show(OpenRouterUsage::report(input, input, now));
    return 0;
}
