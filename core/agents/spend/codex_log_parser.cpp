#include "core/agents/spend/codex_log_parser.h"

#include "core/agents/spend/log_json.h"
#include "core/agents/time_stamps.h"

#include <algorithm>

namespace tarvik {

namespace od = simdjson::ondemand;

const LogLines::Markers& CodexLogParser::markers() {
    static const LogLines::Markers kMarkers{"\"token_count\"", "\"turn_context\"",
                                            "\"session_meta\""};
    return kMarkers;
}

std::optional<TokenUsageEvent> CodexLogParser::event(QByteArrayView line,
                                                     std::size_t readableAfter) {
    std::optional<std::string_view> type;
    std::optional<std::string_view> payloadType;
    std::optional<std::string_view> model;
    std::optional<Totals> now; // "payload.info.total_token_usage"
    LogJSON::Stamp stamp;
    auto info = [&](od::object& o) {
        return LogJSON::fields(o, [&](std::string_view key, LogJSON::Value value) {
            return key != "total_token_usage" ||
                   LogJSON::ifObject(std::move(value), [&](od::object& usage) {
                       now = Totals{};
                       return LogJSON::counts(usage, {{"input_tokens", &now->input},
                                                      {"cached_input_tokens", &now->cached},
                                                      {"output_tokens", &now->output}});
                   });
        });
    };
    auto payload = [&](od::object& o) {
        return LogJSON::fields(o, [&](std::string_view key, LogJSON::Value value) {
            if (key == "type") {
                return LogJSON::stringOf(std::move(value), payloadType);
            }
            if (key == "model") {
                return LogJSON::stringOf(std::move(value), model);
            }
            return key != "info" || LogJSON::ifObject(std::move(value), info);
        });
    };
    // A line cut off mid-write fails on the way and does not count.
    thread_local od::parser parser;
    const bool read =
        LogJSON::read(parser, line, readableAfter, [&](std::string_view key, LogJSON::Value value) {
            if (key == "type") {
                return LogJSON::stringOf(std::move(value), type);
            }
            if (key == "timestamp") {
                return stamp.read(std::move(value));
            }
            return key != "payload" || LogJSON::ifObject(std::move(value), payload);
        });
    if (!read) {
        return std::nullopt;
    }
    if (type == "turn_context" || type == "session_meta") {
        // Older logs name the model only once, in the session's first line.
        if (model && !model->empty()) {
            model_ = LogJSON::text(*model);
        }
        return std::nullopt;
    }
    // Some token_count events carry only rate limits, with "info" null.
    if (payloadType != "token_count" || !now) {
        return std::nullopt;
    }
    // Totals that went down mean Codex started counting afresh.
    Totals before = previous_.value_or(Totals{});
    if (now->input < before.input || now->cached < before.cached || now->output < before.output) {
        before = Totals{};
    }
    previous_ = now;

    const std::int64_t input = now->input - before.input;
    const std::int64_t cached = now->cached - before.cached;
    const std::int64_t output = now->output - before.output;
    if (input + output < 1) {
        return std::nullopt;
    }
    const auto date = stamp.kind == LogJSON::Stamp::Kind::Text ? TimeStamps::fromUtf8(stamp.text)
                      : stamp.kind == LogJSON::Stamp::Kind::Seconds
                          ? TimeStamps::fromSeconds(stamp.seconds)
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
