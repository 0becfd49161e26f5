#include "core/agents/limits/openrouter_usage.h"

#include "core/agents/limits/usage_json.h"

#include <QJsonObject>
#include <array>

namespace tarvik::OpenRouterUsage {

std::optional<AgentUsageReport> report(const QByteArray& key, const QByteArray& credits,
                                       const QDateTime& now) {
    auto answer = UsageJSON::read(key, AgentProvider::OpenRouter, now);
    const auto creditsBody = UsageJSON::object(credits);
    if (!answer || !creditsBody) {
        return std::nullopt;
    }
    AgentUsageReport& r = answer->report;
    const QJsonObject data = answer->body.value(QLatin1String("data")).toObject();
    r.account = UsageJSON::text(data.value(QLatin1String("label")));
    if (data.value(QLatin1String("is_free_tier")).toBool()) {
        r.plan = QStringLiteral("Free");
    }
    const auto limit = UsageJSON::number(data.value(QLatin1String("limit")));
    const double usage = UsageJSON::number(data.value(QLatin1String("usage"))).value_or(0);
    if (limit && *limit > 0) {
        UsageLimit l;
        l.id = QStringLiteral("key");
        l.title = QStringLiteral("Key Limit");
        l.used = std::max(usage / *limit, 0.0);
        l.detail = QStringLiteral("$%1 of $%2").arg(usage, 0, 'f', 2).arg(*limit, 0, 'f', 2);
        r.limits.push_back(l);
    }
    const QJsonObject c = creditsBody->value(QLatin1String("data")).toObject();
    const auto total = UsageJSON::number(c.value(QLatin1String("total_credits")));
    const auto used = UsageJSON::number(c.value(QLatin1String("total_usage")));
    if (total || used) {
        r.credits.push_back(
            {QStringLiteral("credits"), QStringLiteral("Credits"), used.value_or(0), total});
    }
    QStringList spend;
    constexpr std::array<std::pair<const char*, const char*>, 3> kPeriods = {
        {{"usage_daily", "Today"}, {"usage_weekly", "This week"}, {"usage_monthly", "This month"}}};
    for (const auto& [field, name] : kPeriods) {
        if (const auto amount = UsageJSON::number(data.value(QLatin1String(field)))) {
            spend << QStringLiteral("%1 $%2").arg(QLatin1String(name)).arg(*amount, 0, 'f', 2);
        }
    }
    if (!spend.isEmpty()) {
        r.notes << QStringLiteral("Spend: ") + spend.join(QStringLiteral(" · "));
    }
    return std::move(r);
}

} // namespace tarvik::OpenRouterUsage
