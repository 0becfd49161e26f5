#include "core/agents/limits/copilot_usage.h"

#include "core/agents/limits/usage_json.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <array>
#include <cmath>

namespace tarvik::CopilotUsage {
namespace {

struct Quota {
    const char* key;
    const char* title;
};
constexpr std::array<Quota, 3> kQuotas = {{{"premium_interactions", "Premium Requests"},
                                           {"chat", "Chat"},
                                           {"completions", "Code Completions"}}};

QString amount(double v) {
    return QString::number(v, 'f', v == std::trunc(v) ? 0 : 1);
}

} // namespace

std::optional<QString> pluginToken(const QByteArray& json) {
    const QJsonObject o = QJsonDocument::fromJson(json).object();
    for (auto it = o.begin(); it != o.end(); ++it) {
        if (it.key().contains(QLatin1String("github.com"))) {
            const QString token =
                it.value().toObject().value(QLatin1String("oauth_token")).toString();
            if (!token.isEmpty()) {
                return token;
            }
        }
    }
    return std::nullopt;
}

std::optional<AgentUsageReport> report(const QByteArray& body, const QDateTime& now) {
    auto answer = UsageJSON::read(body, AgentProvider::Copilot, now);
    if (!answer) {
        return std::nullopt;
    }
    auto& [o, r] = *answer;
    r.plan = UsageJSON::plan(o.value(QLatin1String("copilot_plan")));
    r.account = UsageJSON::text(o.value(QLatin1String("login")));
    auto resets = UsageJSON::date(o.value(QLatin1String("quota_reset_date")));
    if (!resets) {
        resets = UsageJSON::date(o.value(QLatin1String("limited_user_reset_date")));
    }
    const QJsonObject snapshots = o.value(QLatin1String("quota_snapshots")).toObject();
    const QJsonObject left = o.value(QLatin1String("limited_user_quotas")).toObject();
    const QJsonObject allowance = o.value(QLatin1String("monthly_quotas")).toObject();
    for (const Quota& q : kQuotas) {
        const QString key = QString::fromLatin1(q.key);
        const QString title = QString::fromLatin1(q.title);
        UsageLimit l;
        l.id = key;
        l.title = title;
        l.resetsAt = resets;
        if (snapshots.contains(key)) {
            const QJsonObject s = snapshots.value(key).toObject();
            if (s.value(QLatin1String("unlimited")).toBool()) {
                r.notes << title + QStringLiteral(": unlimited");
                continue;
            }
            const auto percentLeft = UsageJSON::number(s.value(QLatin1String("percent_remaining")));
            if (!percentLeft) {
                continue;
            }
            l.used = std::max(1.0 - *percentLeft / 100.0, 0.0);
            const auto remaining = UsageJSON::number(s.value(QLatin1String("remaining")));
            const auto entitlement = UsageJSON::number(s.value(QLatin1String("entitlement")));
            if (remaining && entitlement) {
                l.detail = amount(*remaining) + QStringLiteral(" of ") + amount(*entitlement) +
                           QStringLiteral(" left");
            }
            r.limits.push_back(l);
        } else if (left.contains(key) && allowance.contains(key)) {
            const auto have = UsageJSON::number(left.value(key));
            const auto of = UsageJSON::number(allowance.value(key));
            if (!have || !of || *of <= 0) {
                continue;
            }
            l.used = std::max(1.0 - *have / *of, 0.0);
            r.limits.push_back(l);
        }
    }
    return std::move(r);
}

} // namespace tarvik::CopilotUsage
