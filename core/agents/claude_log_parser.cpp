#include "core/agents/claude_log_parser.h"

#include "core/agents/log_lines.h"
#include "core/agents/usage_json.h"

#include <QJsonValue>
#include <cmath>
#include <simdjson.h>
#include <string>

namespace tarvik {
namespace {

namespace od = simdjson::ondemand;

// A JSON number, or a string holding one, as a token count (0 when missing or absurd).
std::int64_t count(od::object& usage, std::string_view field) {
    auto value = usage.find_field_unordered(field);
    if (value.error()) {
        return 0;
    }
    double n = 0;
    if (value.get_double().get(n) != simdjson::SUCCESS) {
        std::string_view text;
        if (value.get_string().get(text) != simdjson::SUCCESS) {
            return 0;
        }
        n = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toDouble();
    }
    // The bound keeps a corrupt figure from overflowing the sums.
    return std::isfinite(n) && n > 0 && n <= 1e15 ? std::llround(n) : 0;
}

QString text(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

// A time stamp written as text: ISO 8601 (read by hand when in the usual layout) or a number of
// seconds.
std::optional<QDateTime> stringDate(std::string_view s) {
    if (auto d = UsageJSON::isoDate(s)) {
        return d;
    }
    bool number = false;
    const QString t = text(s);
    const double seconds = t.toDouble(&number);
    return UsageJSON::date(number ? QJsonValue(seconds) : QJsonValue(t));
}

// A time stamp written as a number of seconds, to the millisecond.
std::optional<QDateTime> secondsDate(double seconds) {
    return UsageJSON::date(QJsonValue(QString::number(seconds, 'f', 3).toDouble()));
}

// A session keeps to one or two models: their names are converted once per thread and then
// shared.
QString modelName(std::string_view s) {
    thread_local std::string lastText;
    thread_local QString last;
    if (s != lastText) {
        lastText.assign(s);
        last = text(s);
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
    thread_local od::parser parser;
    od::document doc;
    const auto size = static_cast<std::size_t>(line.size());
    const char* input = LogLines::withRoomAfter(line, readableAfter, simdjson::SIMDJSON_PADDING);
    if (parser.iterate(input, size, size + simdjson::SIMDJSON_PADDING).get(doc) !=
        simdjson::SUCCESS) {
        return std::nullopt;
    }
    od::object root;
    if (doc.get_object().get(root) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    Answer a;
    TokenUsageEvent& e = a.event;
    e.provider = AgentProvider::Claude;
    std::string_view& messageId = a.messageId;
    bool haveUsage = false;
    enum class Stamp { None, Text, Seconds } stamp = Stamp::None;
    std::string_view stampText;
    double stampSeconds = 0;
    std::string_view& requestId = a.requestId;
    // One pass over the fields in the order they come.
    for (auto field : root) {
        std::string_view key;
        if (field.unescaped_key().get(key) != simdjson::SUCCESS) {
            return std::nullopt;
        }
        if (key == "message") {
            od::object message;
            if (field.value().get_object().get(message) != simdjson::SUCCESS) {
                return std::nullopt;
            }
            for (auto m : message) {
                std::string_view name;
                if (m.unescaped_key().get(name) != simdjson::SUCCESS) {
                    return std::nullopt;
                }
                std::string_view s;
                if (name == "id" && m.value().get_string().get(s) == simdjson::SUCCESS) {
                    messageId = s;
                } else if (name == "model" && m.value().get_string().get(s) == simdjson::SUCCESS) {
                    e.model = modelName(s);
                } else if (name == "usage") {
                    od::object usage;
                    if (m.value().get_object().get(usage) != simdjson::SUCCESS) {
                        return std::nullopt;
                    }
                    e.input = count(usage, "input_tokens");
                    e.output = count(usage, "output_tokens");
                    e.cacheWrite = count(usage, "cache_creation_input_tokens");
                    e.cacheRead = count(usage, "cache_read_input_tokens");
                    haveUsage = true;
                }
            }
        } else if (key == "timestamp") {
            std::string_view s;
            if (field.value().get_string().get(s) == simdjson::SUCCESS) {
                stamp = Stamp::Text;
                stampText = s;
            } else {
                double seconds = 0;
                if (field.value().get_double().get(seconds) == simdjson::SUCCESS) {
                    stamp = Stamp::Seconds;
                    stampSeconds = seconds;
                }
            }
        } else if (key == "requestId") {
            std::string_view s;
            if (field.value().get_string().get(s) == simdjson::SUCCESS) {
                requestId = s;
            }
        }
    }
    if (!haveUsage) {
        return std::nullopt;
    }
    if (e.model.isEmpty()) {
        e.model = QStringLiteral("unknown");
    }
    // Claude Code's own notices ("<synthetic>") cost nothing.
    if (e.model == QLatin1String("<synthetic>") || stamp == Stamp::None) {
        return std::nullopt;
    }
    const auto date = stamp == Stamp::Text ? stringDate(stampText) : secondsDate(stampSeconds);
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
