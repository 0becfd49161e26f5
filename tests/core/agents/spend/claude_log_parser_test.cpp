// Claude Code's project log lines: what an answer cost in tokens, and what isn't counted.
#include "core/agents/spend/claude_log_parser.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>

using namespace tarvik;

namespace {

// An assistant line as Claude Code writes it, with the parts a test varies.
QByteArray line(const char* messageId, const char* requestId,
                const char* model = "claude-sonnet-4-5",
                const char* usage = R"({"input_tokens":10,"output_tokens":20})",
                const char* timestamp = "2025-10-01T09:30:12.345Z") {
    return QStringLiteral(R"({"parentUuid":"p1","isSidechain":false,"type":"assistant",)"
                          R"("message":{"id":"%1","type":"message","role":"assistant",)"
                          R"("model":"%2","content":[{"type":"text","text":"Done."}],"usage":%3},)"
                          R"("requestId":"%4","timestamp":"%5"})")
        .arg(QLatin1String(messageId), QLatin1String(model), QLatin1String(usage),
             QLatin1String(requestId), QLatin1String(timestamp))
        .toUtf8();
}

} // namespace

TEST(ClaudeLogParser, ReadsTheAnswersTokensModelAndDate) {
    ClaudeLogParser parser;
    const auto e = parser.event(line(
        "msg_1", "req_1", "claude-opus-4-5-20251101",
        R"({"input_tokens":3,"cache_creation_input_tokens":1200,"cache_read_input_tokens":"45000",)"
        R"("output_tokens":410,"service_tier":"standard"})"));
    ASSERT_TRUE(e);
    EXPECT_EQ(e->provider, AgentProvider::Claude);
    EXPECT_EQ(e->model, "claude-opus-4-5-20251101");
    EXPECT_EQ(e->date, QDateTime(QDate(2025, 10, 1), QTime(9, 30, 12, 345), Qt::UTC));
    EXPECT_EQ(e->input, 3);
    EXPECT_EQ(e->output, 410);
    EXPECT_EQ(e->cacheWrite, 1200);
    EXPECT_EQ(e->cacheRead, 45'000);

    // Missing figures are zero; a message without a model is "unknown".
    const auto bare = parser.event(
        R"({"timestamp":"2025-10-01T09:31:00Z","message":{"id":"msg_2","usage":{"output_tokens":5}}})");
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->model, "unknown");
    EXPECT_EQ(bare->input, 0);
    EXPECT_EQ(bare->cacheRead, 0);
    EXPECT_EQ(bare->totalTokens(), 5);
}

TEST(ClaudeLogParser, TimeStampsInAnyZoneToTheMillisecondOrInSeconds) {
    ClaudeLogParser parser;
    auto at = [&](const char* id, const char* timestamp) {
        const auto e =
            parser.event(line(id, "req", "claude-sonnet-4-5", R"({"input_tokens":1})", timestamp));
        return e ? e->date : QDateTime();
    };
    const QDateTime utc(QDate(2025, 9, 30), QTime(22, 15, 0, 457), Qt::UTC);
    EXPECT_EQ(at("m1", "2025-10-01T01:45:00.456789+03:30"), utc);
    EXPECT_EQ(at("m2", "2025-09-30T20:15:00.4566-02:00"), utc);
    EXPECT_EQ(at("m3", "2025-09-30T22:15:00.457Z"), utc);
    EXPECT_EQ(at("m4", "2025-09-30T23:59:59.9996Z"),
              QDateTime(QDate(2025, 10, 1), QTime(0, 0), Qt::UTC));
    // A number of seconds, as text or as a number.
    EXPECT_EQ(at("m5", "1759270500.457"), utc);
    const auto number = parser.event(
        R"({"timestamp":1759270500.457,"message":{"id":"m6","usage":{"input_tokens":1}}})");
    ASSERT_TRUE(number);
    EXPECT_EQ(number->date, utc);
}

TEST(ClaudeLogParser, TwoLinesWithOneMessageAndRequestIdCountOnce) {
    ClaudeLogParser parser;
    EXPECT_TRUE(parser.event(line("msg_1", "req_1")));
    EXPECT_FALSE(parser.event(line("msg_1", "req_1")));
    EXPECT_TRUE(parser.event(line("msg_1", "req_2"))); // the same message id, asked again
    EXPECT_TRUE(parser.event(line("msg_2", "req_1")));
    // Without a message id nothing tells a repeat, so both count.
    const QByteArray noId =
        R"({"timestamp":"2025-10-01T09:31:00Z","message":{"usage":{"output_tokens":5}}})";
    EXPECT_TRUE(parser.event(noId));
    EXPECT_TRUE(parser.event(noId));
    // A repeat that was dropped as malformed the first time still counts when it is readable.
    EXPECT_FALSE(parser.event(
        line("msg_3", "req_3", "claude-sonnet-4-5", R"({"input_tokens":1})", "yesterday")));
    EXPECT_TRUE(parser.event(line("msg_3", "req_3")));
    // The two ids are told apart, not run together.
    EXPECT_TRUE(parser.event(line("msg_ab", "c")));
    EXPECT_TRUE(parser.event(line("msg_a", "bc")));
    EXPECT_FALSE(parser.event(line("msg_ab", "c")));
    // Another scan starts afresh.
    EXPECT_TRUE(ClaudeLogParser().event(line("msg_1", "req_1")));
}

TEST(ClaudeLogParser, SyntheticUndatedAndMalformedLinesAreSkipped) {
    ClaudeLogParser parser;
    EXPECT_FALSE(parser.event(line("msg_1", "req_1", "<synthetic>")));
    EXPECT_FALSE(parser.event(
        line("msg_2", "req_2", "claude-sonnet-4-5", R"({"input_tokens":1})", "not a date")));
    EXPECT_FALSE(parser.event(line("msg_3", "req_3", "claude-sonnet-4-5", "12")));
    EXPECT_FALSE(parser.event(line("msg_4", "req_4").chopped(10))); // cut off mid-write
    EXPECT_FALSE(parser.event(R"({"type":"user","message":{"role":"user","content":"hi"},)"
                              R"("timestamp":"2025-10-01T09:30:12Z"})"));
    EXPECT_FALSE(parser.event(R"(["usage",{"input_tokens":1}])"));
    EXPECT_FALSE(parser.event(R"({"usage":{"input_tokens":1},"timestamp":"2025-10-01"})"));
    EXPECT_FALSE(parser.event(line("msg_5", "req_5", "claude-sonnet-4-5", R"({"input_tokens":1})",
                                   "2025-02-29T09:30:12Z"))); // no such day
    EXPECT_FALSE(parser.event(""));
    EXPECT_FALSE(parser.event("\x00\xff\"usage\"\x01"));
}

TEST(ClaudeLogParser, LinesAFuzzerFoundToCrashItAreSkippedSafely) {
    // Each once crashed the parser by reading on in a document after an error (a value of the
    // wrong type, then a malformed one). Read where they lie and as copies alike.
    const QDir dir(QStringLiteral(TARVIK_FIXTURES "/agents/claude-crashes"));
    const QStringList names = dir.entryList(QDir::Files);
    ASSERT_GE(names.size(), 20);
    ClaudeLogParser parser;
    for (const QString& name : names) {
        QFile f(dir.filePath(name));
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        const QByteArray bytes = f.readAll();
        const QByteArray padded = bytes + QByteArray(LogLines::kReadableAfterLine, '}');
        EXPECT_FALSE(parser.event(bytes)) << name.toStdString();
        EXPECT_FALSE(ClaudeLogParser::answer(QByteArrayView(padded).first(bytes.size()),
                                             LogLines::kReadableAfterLine))
            << name.toStdString();
    }
    // A count given as text still counts; one of another type counts nothing; the rest of the
    // line is read all the same.
    const auto a =
        parser.event(line("msg_t", "req_t", "claude-sonnet-4-5",
                          R"({"input_tokens":"12","output_tokens":null,)"
                          R"("cache_read_input_tokens":[1,2],"cache_creation_input_tokens":3})"));
    ASSERT_TRUE(a);
    EXPECT_EQ(a->input, 12);
    EXPECT_EQ(a->output, 0);
    EXPECT_EQ(a->cacheRead, 0);
    EXPECT_EQ(a->cacheWrite, 3);
}

TEST(ClaudeLogParser, ALineReadWhereItLiesIsNotCompletedByTheBytesAfterIt) {
    // A file's lines are parsed in its read buffer; one cut off before its last braces must not
    // borrow them from what follows.
    const QByteArray whole = line("msg_1", "req_1");
    const QByteArray buffer = whole + QByteArray(LogLines::kReadableAfterLine, ' ');
    EXPECT_FALSE(ClaudeLogParser::answer(QByteArrayView(buffer).first(whole.size() - 1),
                                         LogLines::kReadableAfterLine));
    const auto a = ClaudeLogParser::answer(QByteArrayView(buffer).first(whole.size()),
                                           LogLines::kReadableAfterLine);
    ASSERT_TRUE(a);
    EXPECT_EQ(a->messageId, "msg_1");
    EXPECT_EQ(a->requestId, "req_1");
    EXPECT_EQ(a->event.output, 20);
}

TEST(ClaudeLogParser, ALineIsOneObjectWhateverFollowsIt) {
    // A brace too many, or the next line run into this one, voids the line: read from a copy
    // and where it lies alike, whatever the bytes after it.
    const QByteArray whole = line("msg_1", "req_1");
    for (const QByteArray& bad : {whole + "}", whole + whole, whole + R"({"a":1})"}) {
        EXPECT_FALSE(ClaudeLogParser::answer(bad)) << bad.toStdString();
        for (char after : {'}', ' ', '\n'}) {
            const QByteArray buffer = bad + QByteArray(LogLines::kReadableAfterLine, after);
            EXPECT_FALSE(ClaudeLogParser::answer(QByteArrayView(buffer).first(bad.size()),
                                                 LogLines::kReadableAfterLine))
                << bad.toStdString() << " " << after;
        }
    }
    EXPECT_TRUE(ClaudeLogParser::answer(whole + " \t"));
}

TEST(AnswerKeys, KnowsEveryAnswerSeenAsASetOfIdPairsDoes) {
    // Hundreds of thousands of short ids drawn from a small alphabet, so repeats, shared
    // prefixes and empty request ids are common, through several growths of the table.
    std::mt19937 random(11);
    auto id = [&] {
        std::string s(random() % 6, 'a');
        for (char& c : s) {
            c = static_cast<char>('a' + random() % 3);
        }
        return s;
    };
    AnswerKeys keys;
    std::set<std::pair<std::string, std::string>> reference;
    for (int i = 0; i < 300'000; ++i) {
        const std::string message = id();
        const std::string request = id();
        ASSERT_EQ(keys.insert(message, request), reference.emplace(message, request).second)
            << message << " " << request;
    }
    EXPECT_EQ(keys.size(), reference.size());
}
