#include "core/agents/limits/claude_usage.h"

#include "core/agents/limits/usage_json.h"
#include "core/agents/time_stamps.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <algorithm>

namespace tarvik::ClaudeUsage {
namespace {

std::optional<UsageLimit> limit(const QJsonValue& value, const QString& id, const QString& title,
                                std::optional<double> window) {
    if (!value.isObject()) {
        return std::nullopt;
    }
    const QJsonObject o = value.toObject();
    const auto utilization = UsageJSON::number(o.value(QLatin1String("utilization")));
    if (!utilization) {
        return std::nullopt;
    }
    UsageLimit l;
    l.id = id;
    l.title = title;
    l.used = std::max(*utilization / 100.0, 0.0);
    l.resetsAt = UsageJSON::date(o.value(QLatin1String("resets_at")));
    l.window = window;
    return l;
}

} // namespace

std::optional<Credentials> credentials(const QByteArray& json) {
    const QJsonObject oauth =
        QJsonDocument::fromJson(json).object().value(QLatin1String("claudeAiOauth")).toObject();
    const auto token = UsageJSON::text(oauth.value(QLatin1String("accessToken")));
    if (!token) {
        return std::nullopt;
    }
    Credentials c;
    c.accessToken = *token;
    if (const auto ms = UsageJSON::number(oauth.value(QLatin1String("expiresAt")))) {
        c.expiresAt = TimeStamps::fromSeconds(*ms / 1000.0);
    }
    c.subscription = UsageJSON::text(oauth.value(QLatin1String("subscriptionType")));
    c.rateLimitTier = UsageJSON::text(oauth.value(QLatin1String("rateLimitTier")));
    return c;
}

std::optional<QString> planName(const std::optional<QString>& rateLimitTier,
                                const std::optional<QString>& subscription) {
    if (rateLimitTier) {
        static const QRegularExpression kMultiple(QStringLiteral("(\\d+)x"));
        const auto m = kMultiple.match(*rateLimitTier);
        if (m.hasMatch()) {
            return QStringLiteral("Max %1x").arg(m.captured(1));
        }
    }
    return subscription ? std::optional(UsageJSON::capitalized(*subscription)) : std::nullopt;
}

std::optional<AgentUsageReport> report(const QByteArray& body, const Credentials& credentials,
                                       const QDateTime& now) {
    auto answer = UsageJSON::read(body, AgentProvider::Claude, now);
    if (!answer) {
        return std::nullopt;
    }
    auto& [o, r] = *answer;
    r.plan = planName(credentials.rateLimitTier, credentials.subscription);
    constexpr double kWeek = 604'800;
    if (auto l = limit(o.value(QLatin1String("five_hour")), QStringLiteral("five_hour"),
                       QStringLiteral("Session"), 18'000)) {
        r.limits.push_back(*l);
    }
    if (auto l = limit(o.value(QLatin1String("seven_day")), QStringLiteral("seven_day"),
                       QStringLiteral("Weekly"), kWeek)) {
        r.limits.push_back(*l);
    }
    QStringList keys = o.keys();
    std::sort(keys.begin(), keys.end());
    for (const QString& key : keys) {
        if (key.startsWith(QLatin1String("seven_day_"))) {
            if (auto l = limit(o.value(key), key, UsageJSON::title(key.mid(10)), kWeek)) {
                r.limits.push_back(*l);
            }
        }
    }
    const QJsonObject extra = o.value(QLatin1String("extra_usage")).toObject();
    if (extra.value(QLatin1String("is_enabled")).toBool()) {
        CreditBalance c;
        c.id = QStringLiteral("extra");
        c.title = QStringLiteral("Extra Usage");
        c.used = UsageJSON::number(extra.value(QLatin1String("used_credits"))).value_or(0) / 100.0;
        if (const auto cap = UsageJSON::number(extra.value(QLatin1String("monthly_limit")))) {
            c.limit = *cap / 100.0; // the service counts cents
        }
        r.credits.push_back(c);
        if (auto l = limit(extra, c.id, c.title, std::nullopt)) {
            r.limits.push_back(*l);
        }
    }
    return std::move(r);
}

} // namespace tarvik::ClaudeUsage
