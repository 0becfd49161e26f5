#include "core/agents/limits/codex_usage.h"

#include "core/agents/limits/usage_json.h"
#include "core/agents/time_stamps.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <algorithm>

namespace tarvik::CodexUsage {
namespace {

// A limit is named by its period; without one, the primary window is the session.
QString title(const UsageLimit& l) {
    return l.window ? UsageJSON::windowTitle(*l.window)
                    : (l.id == QLatin1String("primary") ? QStringLiteral("Session")
                                                        : QStringLiteral("Weekly"));
}

std::optional<UsageLimit> window(const QJsonObject& w, const QString& id, const QDateTime& now) {
    const auto percent = UsageJSON::number(w.value(QLatin1String("used_percent")));
    if (!percent) {
        return std::nullopt;
    }
    UsageLimit l;
    l.id = id;
    l.used = std::max(*percent / 100.0, 0.0);
    l.window = UsageJSON::number(w.value(QLatin1String("limit_window_seconds")));
    if (const auto after = UsageJSON::number(w.value(QLatin1String("reset_after_seconds")))) {
        l.resetsAt = TimeStamps::secondsAfter(now, *after);
    } else {
        l.resetsAt = UsageJSON::date(w.value(QLatin1String("reset_at")));
    }
    l.title = title(l);
    return l;
}

} // namespace

std::optional<Credentials> credentials(const QByteArray& json) {
    const QJsonObject o = QJsonDocument::fromJson(json).object();
    Credentials c;
    const QJsonObject tokens = o.value(QLatin1String("tokens")).toObject();
    c.accessToken = tokens.value(QLatin1String("access_token")).toString();
    c.accountID = UsageJSON::text(tokens.value(QLatin1String("account_id")));
    c.usesAPIKey = !o.value(QLatin1String("OPENAI_API_KEY")).toString().isEmpty();
    if (c.accessToken.isEmpty() && !c.usesAPIKey) {
        return std::nullopt;
    }
    return c;
}

std::optional<AgentUsageReport> report(const QByteArray& body, const QDateTime& now) {
    auto answer = UsageJSON::read(body, AgentProvider::Codex, now);
    if (!answer) {
        return std::nullopt;
    }
    auto& [o, r] = *answer;
    r.plan = UsageJSON::plan(o.value(QLatin1String("plan_type")));
    const QJsonObject limits = o.value(QLatin1String("rate_limit")).toObject();
    if (auto l = window(limits.value(QLatin1String("primary_window")).toObject(),
                        QStringLiteral("primary"), now)) {
        r.limits.push_back(*l);
    }
    if (auto l = window(limits.value(QLatin1String("secondary_window")).toObject(),
                        QStringLiteral("secondary"), now)) {
        r.limits.push_back(*l);
    }
    const QJsonObject credits = o.value(QLatin1String("credits")).toObject();
    if (credits.value(QLatin1String("has_credits")).toBool()) {
        if (credits.value(QLatin1String("unlimited")).toBool()) {
            r.notes << QStringLiteral("Credits: unlimited");
        } else {
            r.notes
                << QStringLiteral("Credits: %1 left")
                       .arg(UsageJSON::number(credits.value(QLatin1String("balance"))).value_or(0),
                            0, 'f', 2);
        }
    }
    return std::move(r);
}

std::optional<std::pair<QDateTime, std::vector<UsageLimit>>>
limitsFromLine(const QByteArray& line) {
    if (!line.contains("\"rate_limits\"")) {
        return std::nullopt; // cheap filter: most lines never get parsed
    }
    const QJsonObject o = QJsonDocument::fromJson(line).object();
    const QJsonObject payload = o.value(QLatin1String("payload")).toObject();
    if (payload.value(QLatin1String("type")).toString() != QLatin1String("token_count")) {
        return std::nullopt;
    }
    const auto stamp = UsageJSON::date(o.value(QLatin1String("timestamp")));
    const QJsonObject limits = payload.value(QLatin1String("rate_limits")).toObject();
    if (!stamp || limits.isEmpty()) {
        return std::nullopt;
    }
    std::vector<UsageLimit> out;
    for (const char* id : {"primary", "secondary"}) {
        const QJsonObject w = limits.value(QLatin1String(id)).toObject();
        const auto percent = UsageJSON::number(w.value(QLatin1String("used_percent")));
        if (!percent) {
            continue;
        }
        UsageLimit l;
        l.id = QString::fromLatin1(id);
        l.used = std::max(*percent / 100.0, 0.0);
        if (const auto minutes = UsageJSON::number(w.value(QLatin1String("window_minutes")))) {
            l.window = *minutes * 60.0;
        }
        if (const auto in = UsageJSON::number(w.value(QLatin1String("resets_in_seconds")))) {
            l.resetsAt = TimeStamps::secondsAfter(*stamp, *in);
        } else {
            l.resetsAt = UsageJSON::date(w.value(QLatin1String("resets_at")));
        }
        l.title = title(l);
        out.push_back(l);
    }
    if (out.empty()) {
        return std::nullopt;
    }
    return std::make_pair(*stamp, out);
}

std::optional<AgentUsageReport> latestSessionLimits(const std::filesystem::path& sessions,
                                                    const QDateTime& now) {
    // The newest log by modification time; read from its end, the newest line wins.
    std::error_code ec;
    std::filesystem::path newest;
    std::filesystem::file_time_type newestTime{};
    for (auto it = std::filesystem::recursive_directory_iterator(sessions, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        if (it->path().extension() != ".jsonl" || !it->is_regular_file(ec)) {
            continue;
        }
        const auto t = it->last_write_time(ec);
        if (!ec && (newest.empty() || t > newestTime)) {
            newest = it->path();
            newestTime = t;
        }
    }
    if (newest.empty()) {
        return std::nullopt;
    }
    QFile file(QString::fromStdString(newest.string()));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (auto it = lines.crbegin(); it != lines.crend(); ++it) {
        if (auto found = limitsFromLine(*it)) {
            AgentUsageReport r;
            r.provider = AgentProvider::Codex;
            r.fetchedAt = now;
            r.limits = std::move(found->second);
            r.notes << QStringLiteral("As of your last Codex session, ") +
                           QLocale().toString(found->first.toLocalTime(), QLocale::ShortFormat) +
                           QLatin1Char('.');
            return r;
        }
    }
    return std::nullopt;
}

} // namespace tarvik::CodexUsage
