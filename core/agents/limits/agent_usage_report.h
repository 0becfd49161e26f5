#pragma once

#include "core/agents/agent_provider.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace tarvik {

// One limit of a plan, drawn as one bar.
struct UsageLimit {
    QString id; // stable per provider
    QString title;
    double used = 0; // share of the limit used; never below 0, may pass 1
    std::optional<QDateTime> resetsAt;
    std::optional<double> window; // seconds in the limit's period
    std::optional<QString> detail;

    double remaining() const;
    // How far through its period the limit is, 0…1; none without a reset time and a window.
    std::optional<double> elapsed(const QDateTime& now) const;
    // elapsed − used: above 0 means using less than an even pace allows.
    std::optional<double> paceMargin(const QDateTime& now) const;
};

// Money on an account: spent, and the limit when there is one.
struct CreditBalance {
    QString id;
    QString title;
    double used = 0; // currency units
    std::optional<double> limit;
    std::optional<double> remaining() const;
};

struct AgentUsageReport {
    AgentProvider provider = AgentProvider::Claude;
    std::optional<QString> plan;
    std::optional<QString> account;
    std::vector<UsageLimit> limits;
    std::vector<CreditBalance> credits;
    QStringList notes;
    QDateTime fetchedAt;
};

// Why a provider's figures couldn't be had, in the user's words.
struct AgentUsageError {
    enum class Kind { NotSignedIn, Expired, Http, RateLimited, Network, Unexpected };
    Kind kind = Kind::Unexpected;
    QString text;          // NotSignedIn, Expired, Network, Unexpected
    int status = 0;        // Http
    double retryAfter = 0; // RateLimited: seconds to wait before asking again

    QString message() const;
    // The short form for the tray.
    QString menuText() const;

    static AgentUsageError notSignedIn(QString t) { return {Kind::NotSignedIn, std::move(t)}; }
    static AgentUsageError expired(QString t) { return {Kind::Expired, std::move(t)}; }
    static AgentUsageError unexpected(QString t) { return {Kind::Unexpected, std::move(t)}; }
    static AgentUsageError network(QString t) { return {Kind::Network, std::move(t)}; }
    static AgentUsageError http(int s) { return {Kind::Http, {}, s}; }
    static AgentUsageError rateLimited(double s) { return {Kind::RateLimited, {}, 0, s}; }
};

// A report in the words the Agents screen and `tarvik agents` show it in.
struct ReportWords {
    struct Line {
        QString title;
        QString text;
    };
    QString about;            // plan and account, "Max 20x · octocat"; empty without either
    std::vector<Line> limits; // one a limit, in the report's order: "42% used · resets in 3 hours"
    std::vector<Line> credits; // one a balance, in the report's order: "$1.20 of $20.00 used"
};
ReportWords describe(const AgentUsageReport& report, const QDateTime& now);
// "42% used", of a limit's share used.
QString percentUsed(double used);

} // namespace tarvik
