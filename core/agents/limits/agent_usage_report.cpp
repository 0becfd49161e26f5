#include "core/agents/limits/agent_usage_report.h"

#include "core/text/metric_format.h"
#include "core/text/whole_number.h"

#include <algorithm>

namespace tarvik {
namespace {

// How far ahead of an even pace a limit must be before the words say so: a bar only just past
// its tick is no news.
constexpr double kAheadOfPace = 0.05;

// "resets in 2 hours, 13 minutes"; empty without a reset time.
QString resetText(const UsageLimit& limit, const QDateTime& now) {
    if (!limit.resetsAt) {
        return {};
    }
    const double seconds = static_cast<double>(now.secsTo(*limit.resetsAt));
    return seconds <= 0 ? QStringLiteral("resetting now")
                        : QStringLiteral("resets in ") + MetricFormat::duration(seconds);
}

} // namespace

double UsageLimit::remaining() const {
    return std::max(1.0 - used, 0.0);
}

std::optional<double> UsageLimit::elapsed(const QDateTime& now) const {
    if (!resetsAt || !window || *window <= 0) {
        return std::nullopt;
    }
    const double left = static_cast<double>(now.msecsTo(*resetsAt)) / 1000.0;
    return std::clamp(1.0 - left / *window, 0.0, 1.0);
}

std::optional<double> UsageLimit::paceMargin(const QDateTime& now) const {
    const auto e = elapsed(now);
    return e ? std::optional(*e - used) : std::nullopt;
}

std::optional<double> CreditBalance::remaining() const {
    return limit ? std::optional(std::max(*limit - used, 0.0)) : std::nullopt;
}

QString AgentUsageError::message() const {
    switch (kind) {
    case Kind::Http:
        return QStringLiteral("The server answered with HTTP %1").arg(status);
    case Kind::RateLimited:
        return QStringLiteral("The service is asking Tarvik to slow down.");
    case Kind::Network:
        return QStringLiteral("Couldn't connect: ") + text;
    case Kind::NotSignedIn:
    case Kind::Expired:
    case Kind::Unexpected:
        return text;
    }
    return text;
}

QString AgentUsageError::menuText() const {
    switch (kind) {
    case Kind::RateLimited:
        return QStringLiteral("Rate limited, will retry");
    case Kind::NotSignedIn:
        return QStringLiteral("Not signed in");
    case Kind::Expired:
        return QStringLiteral("Sign-in expired");
    case Kind::Http:
    case Kind::Network:
    case Kind::Unexpected:
        return QStringLiteral("Unavailable");
    }
    return {};
}

QString percentUsed(double used) {
    return QStringLiteral("%1% used").arg(roundedNumber<qint64>(used * 100.0));
}

ReportWords describe(const AgentUsageReport& r, const QDateTime& now) {
    ReportWords words;
    QStringList about;
    if (r.plan) {
        about << *r.plan;
    }
    if (r.account) {
        about << *r.account;
    }
    words.about = about.join(QStringLiteral(" · "));
    for (const UsageLimit& l : r.limits) {
        QStringList pieces{percentUsed(l.used)};
        if (l.detail) {
            pieces << *l.detail;
        }
        if (const QString reset = resetText(l, now); !reset.isEmpty()) {
            pieces << reset;
        }
        if (const auto margin = l.paceMargin(now); margin && *margin < -kAheadOfPace) {
            pieces << QStringLiteral("ahead of an even pace");
        }
        words.limits.push_back({l.title, pieces.join(QStringLiteral(" · "))});
    }
    for (const CreditBalance& c : r.credits) {
        words.credits.push_back(
            {c.title,
             c.limit
                 ? QStringLiteral("$%1 of $%2 used").arg(c.used, 0, 'f', 2).arg(*c.limit, 0, 'f', 2)
                 : QStringLiteral("$%1 used").arg(c.used, 0, 'f', 2)});
    }
    return words;
}

} // namespace tarvik
