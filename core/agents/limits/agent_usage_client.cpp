#include "core/agents/limits/agent_usage_client.h"

#include "core/agents/agent_folders.h"
#include "core/agents/limits/claude_usage.h"
#include "core/agents/limits/codex_usage.h"
#include "core/agents/limits/copilot_usage.h"
#include "core/agents/limits/openrouter_usage.h"
#include "core/agents/limits/rate_limit_headers.h"
#include "core/net/limited_answer.h"
#include "core/net/worker_wait.h"
#include "core/sys/secret_store.h"
#include "core/text/platform_words.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <filesystem>

namespace tarvik {
namespace {

// The most a service's answer may hold: a usage report is a few kilobytes.
constexpr qint64 kAnswerBytes = 4 * 1024 * 1024;

std::optional<QByteArray> readFile(const std::filesystem::path& path) {
    QFile f(QString::fromStdString(path.string()));
    if (!f.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return f.readAll();
}

QUrl fromEnv(const char* name, const QUrl& fallback) {
    const QByteArray v = qgetenv(name);
    return v.isEmpty() ? fallback : QUrl(QString::fromUtf8(v));
}

QNetworkRequest request(const QUrl& base, const QString& path) {
    return QNetworkRequest(base.resolved(QUrl(path)));
}

} // namespace

AgentEndpoints AgentEndpoints::fromEnvironment() {
    AgentEndpoints e;
    e.claude = fromEnv("TARVIK_CLAUDE_API", e.claude);
    e.codex = fromEnv("TARVIK_CODEX_API", e.codex);
    e.copilot = fromEnv("TARVIK_COPILOT_API", e.copilot);
    e.openRouter = fromEnv("TARVIK_OPENROUTER_API", e.openRouter);
    return e;
}

QString pastedKeyName(AgentProvider provider) {
    return rawValue(provider);
}

AgentUsageClient::AgentUsageClient() : AgentUsageClient(Options{}) {}

AgentUsageClient::AgentUsageClient(Options options)
    : options_(std::move(options)), nam_(std::make_unique<QNetworkAccessManager>()) {
    if (!options_.pastedKey) {
        options_.pastedKey = [](AgentProvider p) {
            return SecretStore(QString::fromLatin1(kAgentKeysService)).read(pastedKeyName(p));
        };
    }
}

AgentUsageClient::~AgentUsageClient() = default;

AgentUsageReport AgentUsageClient::fetch(AgentProvider provider, const QDateTime& now) {
    switch (provider) {
    case AgentProvider::Claude:
        return fetchClaude(now);
    case AgentProvider::Codex:
        return fetchCodex(now);
    case AgentProvider::Copilot:
        return fetchCopilot(now);
    case AgentProvider::OpenRouter:
        return fetchOpenRouter(now);
    }
    throw AgentUsageError::unexpected(QStringLiteral("Unknown provider."));
}

AgentUsageClient::Answer AgentUsageClient::get(QNetworkRequest r, const QDateTime& now) {
    r.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    r.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    r.setRawHeader("User-Agent", "Tarvik");
    // A usage report is small: nothing is worth inflating, and Qt decompresses only what it
    // asked to be compressed, so a compressed bomb stays the few MB it was sent as.
    r.setRawHeader("Accept-Encoding", "identity");
    // A redirect to another host, port or scheme would carry the sign-in or key along: such a
    // redirect is not followed, and the answer is the redirect itself.
    r.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                   QNetworkRequest::SameOriginRedirectPolicy);
    QNetworkReply* reply = nam_->get(r);
    const LimitedAnswer answer(reply, kAnswerBytes, options_.timeoutMs);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    if (waitUnlessCancelled(loop, options_.cancel)) {
        reply->abort(); // ends as a request without an answer
    }
    Answer a;
    a.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    a.body = answer.body();
    for (const auto& pair : reply->rawHeaderPairs()) {
        a.headers.append({pair.first, pair.second});
    }
    const bool whole = reply->error() == QNetworkReply::NoError;
    const QString error = reply->errorString();
    reply->deleteLater();
    if (answer.cut() != LimitedAnswer::Cut::None) {
        // Qt's network thread may still be reading what the server keeps sending (headers
        // that never end hold it until the server stops): later requests get a thread of
        // their own.
        nam_->clearConnectionCache();
    }
    switch (answer.cut()) {
    case LimitedAnswer::Cut::TooLarge:
        throw AgentUsageError::unexpected(
            QStringLiteral("The service's answer was too large for a usage report."));
    case LimitedAnswer::Cut::TooSlow:
        throw AgentUsageError::network(QStringLiteral("No answer within %1 s")
                                           .arg(QString::number(options_.timeoutMs / 1000.0)));
    case LimitedAnswer::Cut::None:
        break;
    }
    // An answer that broke off is none, whatever its status said.
    if (a.status == 0 || (a.status >= 200 && a.status <= 299 && !whole)) {
        throw AgentUsageError::network(error);
    }
    if (const auto wait = RateLimitHeaders::retryAfter(a.status, a.headers, now)) {
        throw AgentUsageError::rateLimited(*wait);
    }
    return a;
}

AgentUsageReport AgentUsageClient::fetchClaude(const QDateTime& now) {
    std::optional<ClaudeUsage::Credentials> credentials;
    for (const auto& folder : AgentFolders::claude()) {
        if (const auto json = readFile(folder / ".credentials.json")) {
            credentials = ClaudeUsage::credentials(*json);
            if (credentials) {
                break;
            }
        }
    }
    if (!credentials) {
        throw AgentUsageError::notSignedIn(
            QStringLiteral("Sign in to Claude Code: run claude in ") + words::aTerminal() +
            QStringLiteral(", then type /login."));
    }
    if (credentials->expiresAt && *credentials->expiresAt < now) {
        throw AgentUsageError::expired(
            QStringLiteral("Claude Code's sign-in has expired. Run claude in ") +
            words::aTerminal() + QStringLiteral(" once to renew it."));
    }
    QNetworkRequest r = request(options_.endpoints.claude, QStringLiteral("api/oauth/usage"));
    r.setRawHeader("Authorization", "Bearer " + credentials->accessToken.toUtf8());
    r.setRawHeader("anthropic-beta", "oauth-2025-04-20");
    const Answer a = get(r, now);
    if (a.status == 401 || a.status == 403) {
        throw AgentUsageError::expired(
            QStringLiteral("Claude rejected the saved sign-in. Run claude in ") +
            words::aTerminal() + QStringLiteral(" and type /login."));
    }
    if (a.status < 200 || a.status > 299) {
        throw AgentUsageError::http(a.status);
    }
    auto report = ClaudeUsage::report(a.body, *credentials, now);
    if (!report) {
        throw AgentUsageError::unexpected(
            QStringLiteral("Claude's usage response wasn't understood."));
    }
    return *report;
}

AgentUsageReport AgentUsageClient::fetchCodex(const QDateTime& now) {
    const auto home = AgentFolders::codexHome();
    const auto json = readFile(home / "auth.json");
    const auto credentials = json ? CodexUsage::credentials(*json) : std::nullopt;
    const QString signIn = QStringLiteral("Sign in to Codex: run codex login in ") +
                           words::aTerminal() + QLatin1Char('.');
    if (!credentials) {
        throw AgentUsageError::notSignedIn(signIn);
    }
    if (credentials->accessToken.isEmpty()) {
        AgentUsageReport r;
        r.provider = AgentProvider::Codex;
        r.fetchedAt = now;
        r.notes << QStringLiteral("Codex is signed in with an API key, which is billed per token "
                                  "and has no plan limits.");
        return r;
    }
    QNetworkRequest r = request(options_.endpoints.codex, QStringLiteral("backend-api/wham/usage"));
    r.setRawHeader("Authorization", "Bearer " + credentials->accessToken.toUtf8());
    if (credentials->accountID) {
        r.setRawHeader("ChatGPT-Account-Id", credentials->accountID->toUtf8());
    }
    std::optional<AgentUsageError> failure;
    std::optional<AgentUsageReport> report;
    try {
        const Answer a = get(r, now);
        if (a.status >= 200 && a.status <= 299) {
            report = CodexUsage::report(a.body, now);
            if (!report) {
                failure = AgentUsageError::unexpected(
                    QStringLiteral("Codex's usage response wasn't understood."));
            }
        } else if (a.status == 401) {
            failure = AgentUsageError::expired(QStringLiteral("Codex's sign-in has expired. Run "
                                                              "codex login in ") +
                                               words::aTerminal() + QLatin1Char('.'));
        } else {
            failure = AgentUsageError::http(a.status);
        }
    } catch (const AgentUsageError& e) {
        failure = e;
    }
    if (report && !report->limits.empty()) {
        return *report;
    }
    // No limits from the service: the newest session log may still say where they stood.
    if (auto logged = CodexUsage::latestSessionLimits(home / "sessions", now)) {
        if (report) {
            logged->plan = report->plan;
            logged->notes = report->notes + logged->notes;
        }
        return *logged;
    }
    if (report) {
        return *report;
    }
    throw *failure;
}

std::optional<QString> AgentUsageClient::ghToken() const {
    std::vector<QString> candidates = options_.ghCandidates;
    const QString onPath = QStandardPaths::findExecutable(QStringLiteral("gh"));
    if (!onPath.isEmpty()) {
        candidates.push_back(onPath);
    }
    for (const QString& gh : candidates) {
        if (!QFile::exists(gh)) {
            continue;
        }
        QProcess p;
        p.setStandardInputFile(QProcess::nullDevice());
        p.start(gh, {QStringLiteral("auth"), QStringLiteral("token")});
        if (!p.waitForFinished(10'000)) {
            p.kill();
            p.waitForFinished();
            continue;
        }
        const QString token = QString::fromUtf8(p.readAllStandardOutput()).trimmed();
        if (p.exitCode() == 0 && !token.isEmpty()) {
            return token;
        }
    }
    return std::nullopt;
}

AgentUsageReport AgentUsageClient::fetchCopilot(const QDateTime& now) {
    std::optional<QString> token = options_.pastedKey(AgentProvider::Copilot);
    const std::filesystem::path plugins =
        std::filesystem::path(QDir::homePath().toStdString()) / ".config/github-copilot";
    for (const char* file : {"apps.json", "hosts.json"}) {
        if (!token) {
            if (const auto json = readFile(plugins / file)) {
                token = CopilotUsage::pluginToken(*json);
            }
        }
    }
    if (!token) {
        token = ghToken();
    }
    if (!token) {
        throw AgentUsageError::notSignedIn(
            QStringLiteral("Sign in to GitHub with the gh command-line tool (gh auth login), or "
                           "paste a GitHub token."));
    }
    QNetworkRequest r =
        request(options_.endpoints.copilot, QStringLiteral("copilot_internal/user"));
    r.setRawHeader("Authorization", "token " + token->toUtf8());
    r.setRawHeader("Accept", "application/json");
    r.setRawHeader("Editor-Version", "vscode/1.99.0");
    r.setRawHeader("Editor-Plugin-Version", "copilot-chat/0.26.0");
    r.setRawHeader("X-Github-Api-Version", "2025-04-01");
    const Answer a = get(r, now);
    if (a.status == 401 || a.status == 403) {
        throw AgentUsageError::expired(
            QStringLiteral("GitHub didn't accept the token for Copilot. Sign in again with gh auth "
                           "login, or paste a token from an account with Copilot."));
    }
    if (a.status < 200 || a.status > 299) {
        throw AgentUsageError::http(a.status);
    }
    auto report = CopilotUsage::report(a.body, now);
    if (!report) {
        throw AgentUsageError::unexpected(QStringLiteral("Copilot's response wasn't understood."));
    }
    return *report;
}

AgentUsageReport AgentUsageClient::fetchOpenRouter(const QDateTime& now) {
    const auto key = options_.pastedKey(AgentProvider::OpenRouter);
    if (!key) {
        throw AgentUsageError::notSignedIn(
            QStringLiteral("Paste an OpenRouter API key (make one at %1).")
                .arg(QLatin1String(OpenRouterUsage::kKeysPage)));
    }
    auto call = [&](const QString& path) {
        QNetworkRequest r = request(options_.endpoints.openRouter, path);
        r.setRawHeader("Authorization", "Bearer " + key->toUtf8());
        const Answer a = get(r, now);
        if (a.status == 401) {
            throw AgentUsageError::expired(
                QStringLiteral("OpenRouter rejected the API key. Paste a valid one."));
        }
        if (a.status < 200 || a.status > 299) {
            throw AgentUsageError::http(a.status);
        }
        return a.body;
    };
    const QByteArray keyInfo = call(QStringLiteral("api/v1/key"));
    const QByteArray credits = call(QStringLiteral("api/v1/credits"));
    auto report = OpenRouterUsage::report(keyInfo, credits, now);
    if (!report) {
        throw AgentUsageError::unexpected(
            QStringLiteral("OpenRouter's response wasn't understood."));
    }
    return *report;
}

} // namespace tarvik
