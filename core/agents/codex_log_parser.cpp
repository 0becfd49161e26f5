#include "core/agents/codex_log_parser.h"

#include "core/agents/usage_json.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace tarvik {

const LogLines::Markers& CodexLogParser::markers() {
    static const LogLines::Markers kMarkers{"\"token_count\"", "\"turn_context\"",
                                            "\"session_meta\""};
    return kMarkers;
}

std::optional<TokenUsageEvent> CodexLogParser::event(QByteArrayView line) {
    // Most lines are messages and tool calls; only these three kinds are worth parsing.
    if (!markers().in(line)) {
        return std::nullopt;
    }
    const QJsonObject root =
        QJsonDocument::fromJson(QByteArray::fromRawData(line.data(), line.size())).object();
    const QJsonObject payload = root.value(QLatin1String("payload")).toObject();
    const QString type = root.value(QLatin1String("type")).toString();
    if (type == QLatin1String("turn_context") || type == QLatin1String("session_meta")) {
        // Older logs name the model only once, in the session's first line.
        const QString model = payload.value(QLatin1String("model")).toString();
        if (!model.isEmpty()) {
            model_ = model;
        }
        return std::nullopt;
    }
    if (payload.value(QLatin1String("type")).toString() != QLatin1String("token_count")) {
        return std::nullopt;
    }
    // Some token_count events carry only rate limits, with "info" null.
    const QJsonValue totalsValue =
        payload.value(QLatin1String("info")).toObject().value(QLatin1String("total_token_usage"));
    if (!totalsValue.isObject()) {
        return std::nullopt;
    }
    const QJsonObject usage = totalsValue.toObject();
    const Totals now{tokenCount(usage.value(QLatin1String("input_tokens"))),
                     tokenCount(usage.value(QLatin1String("cached_input_tokens"))),
                     tokenCount(usage.value(QLatin1String("output_tokens")))};
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
    const auto date = UsageJSON::date(root.value(QLatin1String("timestamp")));
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
