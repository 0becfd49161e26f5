#include "core/agents/limits/agent_usage_report.h"

#include <algorithm>

namespace tarvik {

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

} // namespace tarvik
