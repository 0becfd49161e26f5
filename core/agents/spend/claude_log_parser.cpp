#include "core/agents/spend/claude_log_parser.h"

#include "core/agents/spend/log_json.h"
#include "core/agents/time_stamps.h"

#include <optional>
#include <string>

namespace tarvik {
namespace {

namespace od = simdjson::ondemand;

// A time stamp written as text: ISO 8601 (read by hand when in the usual layout) or a number of
// seconds.
std::optional<QDateTime> stringDate(std::string_view s) {
    if (auto d = TimeStamps::isoDate(s)) {
        return d;
    }
    bool number = false;
    const QString t = LogJSON::text(s);
    const double seconds = t.toDouble(&number);
    return number ? TimeStamps::fromSeconds(seconds) : TimeStamps::fromText(t);
}

// A time stamp written as a number of seconds, to the millisecond.
std::optional<QDateTime> secondsDate(double seconds) {
    return TimeStamps::fromSeconds(QString::number(seconds, 'f', 3).toDouble());
}

// A session keeps to one or two models: their names are converted once per thread and then
// shared.
QString modelName(std::string_view s) {
    thread_local std::string lastText;
    thread_local QString last;
    if (s != lastText) {
        lastText.assign(s);
        last = LogJSON::text(s);
    }
    return last;
}

} // namespace

const LogLines::Markers& ClaudeLogParser::markers() {
    static const LogLines::Markers kMarkers{"\"usage\""};
    return kMarkers;
}

std::optional<ClaudeLogParser::Answer> ClaudeLogParser::answer(QByteArrayView line,
                                                               std::size_t readableAfter) {
    Answer a;
    TokenUsageEvent& e = a.event;
    e.provider = AgentProvider::Claude;
    bool haveUsage = false;
    LogJSON::Stamp stamp;
    auto messageField = [&](std::string_view name, LogJSON::Value value) {
        if (name == "usage") {
            od::object usage;
            haveUsage = true;
            return value.get_object().get(usage) == simdjson::SUCCESS &&
                   LogJSON::counts(usage, {{"input_tokens", &e.input},
                                           {"output_tokens", &e.output},
                                           {"cache_creation_input_tokens", &e.cacheWrite},
                                           {"cache_read_input_tokens", &e.cacheRead}});
        }
        if (name != "id" && name != "model") {
            return true;
        }
        std::optional<std::string_view> s;
        if (!LogJSON::stringOf(std::move(value), s)) {
            return false;
        }
        if (s && name == "id") {
            a.messageId = *s;
        } else if (s) {
            e.model = modelName(*s);
        }
        return true;
    };
    thread_local od::parser parser;
    const bool read =
        LogJSON::read(parser, line, readableAfter, [&](std::string_view key, LogJSON::Value value) {
            if (key == "message") {
                od::object message;
                return value.get_object().get(message) == simdjson::SUCCESS &&
                       LogJSON::fields(message, messageField);
            }
            if (key == "timestamp") {
                return stamp.read(std::move(value));
            }
            if (key == "requestId") {
                std::optional<std::string_view> s;
                if (!LogJSON::stringOf(std::move(value), s)) {
                    return false;
                }
                a.requestId = s.value_or(std::string_view());
            }
            return true;
        });
    if (!read || !haveUsage) {
        return std::nullopt;
    }
    if (e.model.isEmpty()) {
        e.model = QStringLiteral("unknown");
    }
    // Claude Code's own notices ("<synthetic>") cost nothing.
    if (e.model == QLatin1String("<synthetic>") || stamp.kind == LogJSON::Stamp::Kind::None) {
        return std::nullopt;
    }
    const auto date = stamp.kind == LogJSON::Stamp::Kind::Text ? stringDate(stamp.text)
                                                               : secondsDate(stamp.seconds);
    if (!date) {
        return std::nullopt;
    }
    e.date = *date;
    return a;
}

bool ClaudeLogParser::firstTime(std::string_view messageId, std::string_view requestId) {
    if (messageId.empty()) {
        return true; // without a message id there is nothing to tell a repeat by
    }
    return seen_.insert(messageId, requestId);
}

std::optional<TokenUsageEvent> ClaudeLogParser::event(QByteArrayView line) {
    auto a = answer(line);
    if (!a || !firstTime(a->messageId, a->requestId)) {
        return std::nullopt;
    }
    return std::move(a->event);
}

} // namespace tarvik
