#include "core/agents/claude_log_parser.h"

#include "core/agents/usage_json.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace tarvik {

std::optional<TokenUsageEvent> ClaudeLogParser::event(QByteArrayView line) {
    // Most lines are prompts, tool output and summaries; they are passed over unparsed.
    if (!line.contains(QByteArrayView("\"usage\""))) {
        return std::nullopt;
    }
    const QJsonDocument doc =
        QJsonDocument::fromJson(QByteArray::fromRawData(line.data(), line.size()));
    const QJsonObject root = doc.object();
    const QJsonValue messageValue = root.value(QLatin1String("message"));
    const QJsonValue usageValue = messageValue.toObject().value(QLatin1String("usage"));
    if (!messageValue.isObject() || !usageValue.isObject()) {
        return std::nullopt;
    }
    const QJsonObject message = messageValue.toObject();
    const QJsonObject usage = usageValue.toObject();

    TokenUsageEvent e;
    e.provider = AgentProvider::Claude;
    e.model = message.value(QLatin1String("model")).toString();
    if (e.model.isEmpty()) {
        e.model = QStringLiteral("unknown");
    }
    // Claude Code's own notices ("<synthetic>") cost nothing.
    if (e.model == QLatin1String("<synthetic>")) {
        return std::nullopt;
    }
    const auto date = UsageJSON::date(root.value(QLatin1String("timestamp")));
    if (!date) {
        return std::nullopt;
    }
    e.date = *date;
    e.input = tokenCount(usage.value(QLatin1String("input_tokens")));
    e.output = tokenCount(usage.value(QLatin1String("output_tokens")));
    e.cacheWrite = tokenCount(usage.value(QLatin1String("cache_creation_input_tokens")));
    e.cacheRead = tokenCount(usage.value(QLatin1String("cache_read_input_tokens")));

    // Without a message id there is nothing to tell a repeat by, so the line counts.
    const QString id = message.value(QLatin1String("id")).toString();
    if (!id.isEmpty()) {
        const QString key =
            id + QLatin1Char(':') + root.value(QLatin1String("requestId")).toString();
        if (seen_.contains(key)) {
            return std::nullopt;
        }
        seen_.insert(key);
    }
    return e;
}

} // namespace tarvik
