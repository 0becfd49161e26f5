#include "core/agents/spend/claude_log_parser.h"

#include "core/agents/spend/log_lines.h"
#include "core/agents/time_stamps.h"

#include <cmath>
#include <optional>
#include <simdjson.h>
#include <string>

namespace tarvik {
namespace {

namespace od = simdjson::ondemand;

// On-demand parsing reads the line as it goes: after any error the document must not be touched
// again, so every step is checked and the first error ends the line.

// A JSON number, or a string holding one, as a token count (0 when absurd or another type);
// none when the value is malformed.
std::optional<std::int64_t> count(od::value value) {
    od::json_type type;
    if (value.type().get(type) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    double n = 0;
    if (type == od::json_type::number) {
        if (value.get_double().get(n) != simdjson::SUCCESS) {
            return std::nullopt;
        }
    } else if (type == od::json_type::string) {
        std::string_view text;
        if (value.get_string().get(text) != simdjson::SUCCESS) {
            return std::nullopt;
        }
        n = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toDouble();
    } else {
        return 0; // skipped by the next field's read, which checks it is well formed
    }
    // The bound keeps a corrupt figure from overflowing the sums.
    return std::isfinite(n) && n > 0 && n <= 1e15 ? std::llround(n) : 0;
}

// The four counts of a "usage" object, in one pass; false when it is malformed.
bool readUsage(od::object& usage, TokenUsageEvent& e) {
    for (auto field : usage) {
        std::string_view key;
        if (field.unescaped_key().get(key) != simdjson::SUCCESS) {
            return false;
        }
        std::int64_t* target = key == "input_tokens"                  ? &e.input
                               : key == "output_tokens"               ? &e.output
                               : key == "cache_creation_input_tokens" ? &e.cacheWrite
                               : key == "cache_read_input_tokens"     ? &e.cacheRead
                                                                      : nullptr;
        if (target == nullptr) {
            continue;
        }
        od::value value;
        if (field.value().get(value) != simdjson::SUCCESS) {
            return false;
        }
        const auto n = count(value);
        if (!n) {
            return false;
        }
        *target = *n;
    }
    return true;
}

// A string value, or none for another type; false when the value is malformed.
bool stringOf(od::value value, std::optional<std::string_view>& out) {
    od::json_type type;
    if (value.type().get(type) != simdjson::SUCCESS) {
        return false;
    }
    if (type != od::json_type::string) {
        return true;
    }
    std::string_view s;
    if (value.get_string().get(s) != simdjson::SUCCESS) {
        return false;
    }
    out = s;
    return true;
}

QString text(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

// A time stamp written as text: ISO 8601 (read by hand when in the usual layout) or a number of
// seconds.
std::optional<QDateTime> stringDate(std::string_view s) {
    if (auto d = TimeStamps::isoDate(s)) {
        return d;
    }
    bool number = false;
    const QString t = text(s);
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
        od::value value;
        if (field.unescaped_key().get(key) != simdjson::SUCCESS) {
            return std::nullopt;
        }
        if (key != "message" && key != "timestamp" && key != "requestId") {
            continue;
        }
        if (field.value().get(value) != simdjson::SUCCESS) {
            return std::nullopt;
        }
        if (key == "message") {
            od::object message;
            if (value.get_object().get(message) != simdjson::SUCCESS) {
                return std::nullopt;
            }
            for (auto m : message) {
                std::string_view name;
                if (m.unescaped_key().get(name) != simdjson::SUCCESS) {
                    return std::nullopt;
                }
                if (name != "id" && name != "model" && name != "usage") {
                    continue;
                }
                od::value v;
                if (m.value().get(v) != simdjson::SUCCESS) {
                    return std::nullopt;
                }
                if (name == "usage") {
                    od::object usage;
                    if (v.get_object().get(usage) != simdjson::SUCCESS || !readUsage(usage, e)) {
                        return std::nullopt;
                    }
                    haveUsage = true;
                    continue;
                }
                std::optional<std::string_view> s;
                if (!stringOf(v, s)) {
                    return std::nullopt;
                }
                if (s && name == "id") {
                    messageId = *s;
                } else if (s) {
                    e.model = modelName(*s);
                }
            }
        } else if (key == "timestamp") {
            od::json_type type;
            if (value.type().get(type) != simdjson::SUCCESS) {
                return std::nullopt;
            }
            if (type == od::json_type::string) {
                if (value.get_string().get(stampText) != simdjson::SUCCESS) {
                    return std::nullopt;
                }
                stamp = Stamp::Text;
            } else if (type == od::json_type::number) {
                if (value.get_double().get(stampSeconds) != simdjson::SUCCESS) {
                    return std::nullopt;
                }
                stamp = Stamp::Seconds;
            }
        } else {
            std::optional<std::string_view> s;
            if (!stringOf(value, s)) {
                return std::nullopt;
            }
            requestId = s.value_or(std::string_view());
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
