#include "core/agents/limits/agent_usage_json.h"

#include <QJsonArray>

namespace tarvik {
namespace {

QJsonValue optional(const std::optional<QString>& v) {
    return v ? QJsonValue(*v) : QJsonValue();
}
QJsonValue optional(const std::optional<double>& v) {
    return v ? QJsonValue(*v) : QJsonValue();
}

// What a limit and a balance both have.
QJsonObject entry(const QString& id, const QString& title, double used) {
    QJsonObject j;
    j[QStringLiteral("id")] = id;
    j[QStringLiteral("title")] = title;
    j[QStringLiteral("used")] = used;
    return j;
}

QString kindName(AgentUsageError::Kind kind) {
    switch (kind) {
    case AgentUsageError::Kind::NotSignedIn:
        return QStringLiteral("notSignedIn");
    case AgentUsageError::Kind::Expired:
        return QStringLiteral("expired");
    case AgentUsageError::Kind::Http:
        return QStringLiteral("http");
    case AgentUsageError::Kind::RateLimited:
        return QStringLiteral("rateLimited");
    case AgentUsageError::Kind::Network:
        return QStringLiteral("network");
    case AgentUsageError::Kind::Unexpected:
        return QStringLiteral("unexpected");
    }
    return {};
}

} // namespace

QJsonObject toJson(const AgentUsageReport& r, const QDateTime& now) {
    QJsonObject o;
    o[QStringLiteral("provider")] = rawValue(r.provider);
    o[QStringLiteral("title")] = title(r.provider);
    o[QStringLiteral("plan")] = optional(r.plan);
    o[QStringLiteral("account")] = optional(r.account);
    QJsonArray limits;
    for (const UsageLimit& l : r.limits) {
        QJsonObject j = entry(l.id, l.title, l.used);
        j[QStringLiteral("remaining")] = l.remaining();
        j[QStringLiteral("resetsAt")] =
            l.resetsAt ? QJsonValue(l.resetsAt->toUTC().toString(Qt::ISODate)) : QJsonValue();
        j[QStringLiteral("window")] = optional(l.window);
        j[QStringLiteral("paceMargin")] = optional(l.paceMargin(now));
        j[QStringLiteral("detail")] = optional(l.detail);
        limits.append(j);
    }
    o[QStringLiteral("limits")] = limits;
    QJsonArray credits;
    for (const CreditBalance& c : r.credits) {
        QJsonObject j = entry(c.id, c.title, c.used);
        j[QStringLiteral("limit")] = optional(c.limit);
        j[QStringLiteral("remaining")] = optional(c.remaining());
        credits.append(j);
    }
    o[QStringLiteral("credits")] = credits;
    o[QStringLiteral("notes")] = QJsonArray::fromStringList(r.notes);
    o[QStringLiteral("fetchedAt")] = r.fetchedAt.toUTC().toString(Qt::ISODate);
    return o;
}

QJsonObject toJson(const AgentUsageError& e) {
    QJsonObject o;
    o[QStringLiteral("kind")] = kindName(e.kind);
    o[QStringLiteral("message")] = e.message();
    if (e.kind == AgentUsageError::Kind::RateLimited) {
        o[QStringLiteral("retryAfter")] = e.retryAfter;
    }
    return o;
}

} // namespace tarvik
