#include "core/agents/spend/codex_log_parser.h"

#include "core/agents/time_stamps.h"

#include <QJsonValue>
#include <algorithm>
#include <cmath>
#include <simdjson.h>
#include <string>

namespace tarvik {
namespace {

namespace dom = simdjson::dom;
// A value looked up by key: an error, not a value, when a key or an object on the way is missing.
using Value = simdjson::simdjson_result<dom::element>;

std::string_view string(const Value& value) {
    std::string_view s;
    return value.get_string().get(s) == simdjson::SUCCESS ? s : std::string_view();
}

// A JSON number, or a string holding one, as a token count, as tokenCount() reads it.
std::int64_t count(const Value& value) {
    double n = 0;
    if (value.get_double().get(n) == simdjson::SUCCESS) {
        return tokenCount(QJsonValue(n));
    }
    if (!value.is_string()) {
        return 0;
    }
    const std::string_view s = string(value);
    return tokenCount(QJsonValue(QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()))));
}

} // namespace

const LogLines::Markers& CodexLogParser::markers() {
    static const LogLines::Markers kMarkers{"\"token_count\"", "\"turn_context\"",
                                            "\"session_meta\""};
    return kMarkers;
}

std::optional<TokenUsageEvent> CodexLogParser::event(QByteArrayView line,
                                                     std::size_t readableAfter) {
    // The whole line is checked, as a line cut off mid-write must not count.
    thread_local dom::parser parser;
    const auto size = static_cast<std::size_t>(line.size());
    const char* text = LogLines::withRoomAfter(line, readableAfter, simdjson::SIMDJSON_PADDING);
    const Value root = parser.parse(text, size, false);
    if (!root.is_object()) {
        return std::nullopt;
    }
    const Value payload = root["payload"];
    const std::string_view type = string(root["type"]);
    if (type == "turn_context" || type == "session_meta") {
        // Older logs name the model only once, in the session's first line.
        const std::string_view model = string(payload["model"]);
        if (!model.empty()) {
            model_ = QString::fromUtf8(model.data(), static_cast<qsizetype>(model.size()));
        }
        return std::nullopt;
    }
    if (string(payload["type"]) != "token_count") {
        return std::nullopt;
    }
    // Some token_count events carry only rate limits, with "info" null.
    const Value usage = payload["info"]["total_token_usage"];
    if (!usage.is_object()) {
        return std::nullopt;
    }
    const Totals now{count(usage["input_tokens"]), count(usage["cached_input_tokens"]),
                     count(usage["output_tokens"])};
    // Totals that went down mean Codex started counting afresh.
    Totals before = previous_.value_or(Totals{});
    if (now.input < before.input || now.cached < before.cached || now.output < before.output) {
        before = Totals{};
    }
    previous_ = now;

    const std::int64_t input = now.input - before.input;
    const std::int64_t cached = now.cached - before.cached;
    const std::int64_t output = now.output - before.output;
    if (input + output < 1) {
        return std::nullopt;
    }
    const Value stamp = root["timestamp"];
    double seconds = 0;
    const auto date = stamp.get_double().get(seconds) == simdjson::SUCCESS
                          ? TimeStamps::fromSeconds(seconds)
                      : stamp.is_string() ? TimeStamps::fromUtf8(string(stamp))
                                          : std::nullopt;
    if (!date) {
        return std::nullopt;
    }
    TokenUsageEvent e;
    e.provider = AgentProvider::Codex;
    e.date = *date;
    e.model = model_;
    // Codex counts the cached tokens inside the input; here they are priced apart.
    e.input = std::max<std::int64_t>(input - cached, 0);
    e.cacheRead = cached;
    e.output = output;
    return e;
}

} // namespace tarvik
