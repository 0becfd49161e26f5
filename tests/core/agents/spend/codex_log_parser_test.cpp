// Codex session logs: running totals turned into each answer's tokens, with the model in use.
#include "core/agents/spend/codex_log_parser.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

QByteArray turnContext(const char* model) {
    return QStringLiteral(R"({"timestamp":"2025-09-18T10:00:00.000Z","type":"turn_context",)"
                          R"("payload":{"cwd":"/work","approval_policy":"on-request",)"
                          R"("model":"%1","summary":"auto"}})")
        .arg(QLatin1String(model))
        .toUtf8();
}

// A token_count event as Codex writes it, with the session's totals so far.
QByteArray totals(std::int64_t input, std::int64_t cached, std::int64_t output,
                  const char* timestamp = "2025-09-18T10:05:00.123Z") {
    return QStringLiteral(
               R"({"timestamp":"%1","type":"event_msg","payload":{"type":"token_count",)"
               R"("info":{"total_token_usage":{"input_tokens":%2,"cached_input_tokens":%3,)"
               R"("output_tokens":%4,"reasoning_output_tokens":0,"total_tokens":%5},)"
               R"("last_token_usage":{"input_tokens":1},"model_context_window":272000},)"
               R"("rate_limits":null}})")
        .arg(QLatin1String(timestamp))
        .arg(input)
        .arg(cached)
        .arg(output)
        .arg(input + output)
        .toUtf8();
}

// A token_count event with `usage` as its totals.
QByteArray withUsage(const char* usage) {
    return QByteArray(R"({"timestamp":"2025-09-18T10:05:00Z","type":"event_msg",)"
                      R"("payload":{"type":"token_count","info":{"total_token_usage":)") +
           usage + R"(},"rate_limits":null}})";
}

// The line read where it lies, with `after` in the bytes that follow it.
std::optional<TokenUsageEvent> inPlace(CodexLogParser& parser, const QByteArray& line, char after) {
    const QByteArray buffer = line + QByteArray(LogLines::kReadableAfterLine, after);
    return parser.event(QByteArrayView(buffer).first(line.size()), LogLines::kReadableAfterLine);
}

std::vector<TokenUsageEvent> read(const std::vector<QByteArray>& lines) {
    CodexLogParser parser;
    std::vector<TokenUsageEvent> out;
    for (const QByteArray& l : lines) {
        if (auto e = parser.event(l)) {
            out.push_back(*e);
        }
    }
    return out;
}

std::vector<std::int64_t> inputs(const std::vector<TokenUsageEvent>& events) {
    std::vector<std::int64_t> out;
    for (const auto& e : events) {
        out.push_back(e.input);
    }
    return out;
}

} // namespace

TEST(CodexLogParser, RunningTotalsBecomeEachAnswersTokensAndAResetStartsFromZero) {
    EXPECT_EQ(inputs(read({totals(100, 0, 0), totals(250, 0, 0), totals(40, 0, 0)})),
              (std::vector<std::int64_t>{100, 150, 40}));

    // Cached tokens are inside Codex's input; they are taken out and priced as cache reads.
    const auto e =
        read({turnContext("gpt-5-codex"), totals(1000, 600, 50), totals(1500, 1400, 80)});
    ASSERT_EQ(e.size(), 2u);
    EXPECT_EQ(e[0].provider, AgentProvider::Codex);
    EXPECT_EQ(e[0].model, "gpt-5-codex");
    EXPECT_EQ(e[0].date, QDateTime(QDate(2025, 9, 18), QTime(10, 5, 0, 123), Qt::UTC));
    EXPECT_EQ(e[0].input, 400);
    EXPECT_EQ(e[0].cacheRead, 600);
    EXPECT_EQ(e[0].output, 50);
    EXPECT_EQ(e[0].cacheWrite, 0);
    // 500 more input of which 800 more cached: no fresh input, never below zero.
    EXPECT_EQ(e[1].input, 0);
    EXPECT_EQ(e[1].cacheRead, 800);
    EXPECT_EQ(e[1].output, 30);

    // Each parser is one file: a second one starts from zero.
    EXPECT_EQ(inputs(read({totals(300, 0, 0)})), std::vector<std::int64_t>{300});
}

TEST(CodexLogParser, TheModelInUseAndLinesThatAddNothing) {
    const QByteArray noInfo =
        R"({"timestamp":"2025-09-18T10:06:00Z","type":"event_msg","payload":{"type":"token_count",)"
        R"("info":null,"rate_limits":{"primary":{"used_percent":5.0}}}})";
    // A tool call that only carries the word is not an event.
    const QByteArray chat =
        R"({"timestamp":"2025-09-18T10:06:00Z","type":"response_item",)"
        R"("payload":{"type":"function_call","name":"token_count","arguments":"{}"}})";
    const auto e = read({
        totals(100, 0, 10),            // before any turn context
        turnContext("gpt-5-codex"),    //
        totals(100, 0, 10),            // unchanged: nothing
        noInfo,                        // rate limits only: nothing, totals kept
        chat,                          //
        "{\"type\":\"token_count\"",   // cut off
        totals(150, 0, 10).chopped(3), // cut off after its totals
        totals(160, 0, 10),            //
        turnContext("gpt-5"),          //
        totals(160, 50, 10),           // only the cached count grew: nothing
        totals(170, 50, 15, "not a date"), totals(200, 50, 25), //
    });
    ASSERT_EQ(e.size(), 3u);
    EXPECT_EQ(e[0].model, "unknown");
    EXPECT_EQ(e[1].model, "gpt-5-codex");
    EXPECT_EQ(e[1].input, 60);
    EXPECT_EQ(e[2].model, "gpt-5");
    // The undated line still moved the totals on.
    EXPECT_EQ(e[2].input, 30);
    EXPECT_EQ(e[2].output, 10);

    // Older sessions name the model in their first line.
    const auto old = read({R"({"timestamp":"2025-08-01T10:00:00Z","type":"session_meta",)"
                           R"("payload":{"id":"s1","model":"gpt-5-mini"}})",
                           totals(10, 0, 1)});
    ASSERT_EQ(old.size(), 1u);
    EXPECT_EQ(old[0].model, "gpt-5-mini");
}

TEST(CodexLogParser, ALineReadWhereItLiesIsNotCompletedByTheBytesAfterIt) {
    // A file's lines are parsed in its read buffer; one cut off two bytes short must not borrow
    // them from what follows.
    const QByteArray whole = totals(100, 0, 10);
    const QByteArray buffer = whole + QByteArray(LogLines::kReadableAfterLine, ' ');
    CodexLogParser parser;
    EXPECT_FALSE(
        parser.event(QByteArrayView(buffer).first(whole.size() - 2), LogLines::kReadableAfterLine));
    const auto e =
        parser.event(QByteArrayView(buffer).first(whole.size()), LogLines::kReadableAfterLine);
    ASSERT_TRUE(e);
    EXPECT_EQ(e->input, 100);
}

TEST(CodexLogParser, MalformedLinesEndTheReadAtTheirFirstErrorAndMoveNothing) {
    // On-demand parsing must not read on in a document after an error: a value of the wrong type
    // or a malformed one, anywhere on the way to the totals. Lines that once crashed the Claude
    // Code parser that way too.
    std::vector<QByteArray> broken = {
        withUsage(R"({"input_tokens":"20",})"),
        withUsage(R"({"input_tokens":,"cached_input_tokens":1,"output_tokens":2})"),
        withUsage(R"({"input_tokens"::10,"output_tokens":5})"),
        withUsage(R"({"input_tokens":1*,"output_tokens":5})"),
        withUsage(R"({"input_tokens":[1,"output_tokens":5})"),
        withUsage(R"({"input_tokens":10,"output_tokens":"5)"),
        withUsage(R"({"input_tokens":1.,"output_tokens":5})"),
        withUsage(R"({"input_tokens":10 "output_tokens":5})"),
        withUsage(R"({"input_tokens":10,"output_tokens":5}}})"),
        withUsage(R"(["input_tokens",10})"),
        QByteArray(R"({"timestamp":"2025-09-18T10:05:00Z",,"type":"event_msg","payload":)"
                   R"({"type":"token_count","info":{"total_token_usage":{"input_tokens":9}}}})"),
        QByteArray(R"({"timestamp":,"payload":{"type":"token_count","info":)"
                   R"({"total_token_usage":{"input_tokens":9}}}})"),
        QByteArray(R"({"timestamp":"2025-09-18T10:05:00Z","payload":{"type":token_count",)"
                   R"("info":{"total_token_usage":{"input_tokens":9}}}})"),
        // A broken turn context does not change the model.
        QByteArray(R"({"type":"turn_context","payload":{"model":"gpt-5-mini",}})"),
        QByteArray(R"({"type":"turn_context","payload":{"model":"gpt-5-mini"},"cwd":})"),
    };
    const QDir crashes(QStringLiteral(TARVIK_FIXTURES "/agents/claude-crashes"));
    for (const QString& name : crashes.entryList(QDir::Files)) {
        QFile f(crashes.filePath(name));
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        broken.push_back(f.readAll());
    }
    CodexLogParser parser;
    ASSERT_FALSE(parser.event(turnContext("gpt-5")));
    for (const QByteArray& line : broken) {
        EXPECT_FALSE(parser.event(line)) << line.toStdString();
        EXPECT_FALSE(inPlace(parser, line, '}')) << line.toStdString();
    }
    const auto e = parser.event(totals(100, 0, 10));
    ASSERT_TRUE(e);
    EXPECT_EQ(e->input, 100);
    EXPECT_EQ(e->model, "gpt-5");

    // A time stamp no date can hold leaves the line undated: it moves the totals on, but counts
    // nothing.
    EXPECT_FALSE(parser.event(totals(150, 0, 10, "1e300").replace("\"1e300\"", "1e300")));
    EXPECT_EQ(parser.event(totals(160, 0, 10))->input, 10);
}

TEST(CodexLogParser, ALineCutAnywhereOrRunIntoTheNextCountsNothing) {
    // Whatever bytes follow a line read where it lies, they never complete it.
    const QByteArray whole = totals(100, 0, 10);
    for (qsizetype n = 0; n < whole.size(); ++n) {
        const QByteArray cut = whole.first(n);
        EXPECT_FALSE(CodexLogParser().event(cut)) << n;
        for (char after : {'}', ']', ',', ':', '"', ' ', '\n', '\0'}) {
            CodexLogParser parser;
            EXPECT_FALSE(inPlace(parser, cut, after)) << n << " " << after;
        }
    }
    EXPECT_FALSE(CodexLogParser().event(whole + whole));
    // Malformed in a part that is never read, the line reads the same whatever follows it.
    const QByteArray skipped =
        R"({"timestamp":"2025-09-18","payload":{"type":"token_count","info":)"
        R"({"total_token_usage":{"input_tokens":2},"":{""},"":}}}})";
    for (char after : {'}', ' '}) {
        CodexLogParser parser;
        EXPECT_EQ(inPlace(parser, skipped, after).has_value(),
                  CodexLogParser().event(skipped).has_value());
    }
    EXPECT_FALSE(CodexLogParser().event(whole + "}"));
    CodexLogParser parser;
    EXPECT_EQ(inPlace(parser, whole + " ", '}')->input, 100);
}
