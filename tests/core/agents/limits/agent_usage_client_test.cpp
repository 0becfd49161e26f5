// The usage client against local servers that answer like the services, with real sign-in
// files in a temporary home.
#include "core/agents/limits/agent_usage_client.h"
#include "tests/support/heap_peak.h"
#include "tests/support/scripted_server.h"
#include "tests/support/temp_home.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QLocale>
#include <QTimer>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::ScriptedServer;
using tarvik::test::writeFile;
using tarvik::tools::HostileAnswer;

namespace {

const QDateTime kNow = QDateTime::currentDateTimeUtc();

AgentUsageClient client(const ScriptedServer& server,
                        std::optional<QString> pasted = std::nullopt) {
    AgentUsageClient::Options o;
    o.endpoints = {server.url(), server.url(), server.url(), server.url()};
    o.pastedKey = [pasted](AgentProvider) {
        return pasted;
    };
    o.ghCandidates = {};
    o.timeoutMs = 2000;
    return AgentUsageClient(o);
}

AgentUsageError failure(AgentUsageClient& c, AgentProvider p) {
    try {
        c.fetch(p, kNow);
    } catch (const AgentUsageError& e) {
        return e;
    }
    ADD_FAILURE() << "expected an AgentUsageError";
    return {};
}

void signInClaude(const test::TempHome& home, qint64 expiresMs) {
    writeFile(home.path() + "/.claude/.credentials.json",
              QString(R"({"claudeAiOauth":{"accessToken":"tok-claude","expiresAt":%1,)"
                      R"("subscriptionType":"pro"}})")
                  .arg(expiresMs)
                  .toUtf8());
}

} // namespace

TEST(AgentUsageClient, ClaudeSendsItsSignInOnlyToItsServiceAndReadsEveryAnswer) {
    test::TempHome home;
    ScriptedServer server;
    auto c = client(server);
    ::unsetenv("CLAUDE_CONFIG_DIR");
    EXPECT_EQ(failure(c, AgentProvider::Claude).message(),
              "Sign in to Claude Code: run claude in a terminal, then type /login.");

    signInClaude(home, kNow.addSecs(-60).toMSecsSinceEpoch());
    EXPECT_EQ(failure(c, AgentProvider::Claude).kind, AgentUsageError::Kind::Expired);
    EXPECT_TRUE(server.requests().empty()); // an expired sign-in is not even sent

    signInClaude(home, kNow.addSecs(3600).toMSecsSinceEpoch());
    server.answer("/api/oauth/usage",
                  {200, R"({"five_hour":{"utilization":12,"resets_at":"2030-01-01T00:00:00Z"}})"});
    const AgentUsageReport r = c.fetch(AgentProvider::Claude, kNow);
    EXPECT_EQ(r.plan, "Pro");
    ASSERT_EQ(r.limits.size(), 1u);
    const auto sent = server.requests().back();
    EXPECT_EQ(sent.headers.at("authorization"), "Bearer tok-claude");
    EXPECT_EQ(sent.headers.at("anthropic-beta"), "oauth-2025-04-20");
    EXPECT_EQ(sent.headers.at("user-agent"), "Tarvik");

    server.answer("/api/oauth/usage", {401, "{}"});
    EXPECT_EQ(failure(c, AgentProvider::Claude).message(),
              "Claude rejected the saved sign-in. Run claude in a terminal and type /login.");
    server.answer("/api/oauth/usage", {403, "{}"});
    EXPECT_EQ(failure(c, AgentProvider::Claude).kind, AgentUsageError::Kind::Expired);
    server.answer("/api/oauth/usage", {403, "{}", {{"x-ratelimit-remaining", "0"}}});
    const AgentUsageError limited = failure(c, AgentProvider::Claude);
    EXPECT_EQ(limited.kind, AgentUsageError::Kind::RateLimited);
    EXPECT_EQ(limited.retryAfter, 300.0);
    EXPECT_EQ(limited.menuText(), "Rate limited, will retry");
    server.answer("/api/oauth/usage", {429, "{}", {{"Retry-After", "5"}}});
    EXPECT_EQ(failure(c, AgentProvider::Claude).retryAfter, 30.0);
    server.answer(
        "/api/oauth/usage",
        {429,
         "{}",
         {{"Retry-After",
           QLocale::c().toString(kNow.addSecs(600), "ddd, dd MMM yyyy HH:mm:ss 'GMT'").toUtf8()}}});
    EXPECT_NEAR(failure(c, AgentProvider::Claude).retryAfter, 600.0, 2.0);
    server.answer("/api/oauth/usage", {502, "bad gateway"});
    EXPECT_EQ(failure(c, AgentProvider::Claude).message(), "The server answered with HTTP 502");
    server.answer("/api/oauth/usage", {200, "<html>maintenance</html>"});
    EXPECT_EQ(failure(c, AgentProvider::Claude).message(),
              "Claude's usage response wasn't understood.");

    // A slow service is given up on with the transport's own words.
    server.answer("/api/oauth/usage", {200, "{}", {}, 4000});
    QElapsedTimer clock;
    clock.start();
    const AgentUsageError slow = failure(c, AgentProvider::Claude);
    EXPECT_EQ(slow.kind, AgentUsageError::Kind::Network);
    EXPECT_TRUE(slow.message().startsWith("Couldn't connect: "));
    EXPECT_LT(clock.elapsed(), 3900);
}

TEST(AgentUsageClient, CodexFallsBackToItsSessionLogAndNeverSendsAnApiKey) {
    test::TempHome home;
    ScriptedServer server;
    auto c = client(server);
    ::setenv("CODEX_HOME", (home.path() + "/codex").toLocal8Bit().constData(), 1);
    EXPECT_EQ(failure(c, AgentProvider::Codex).message(),
              "Sign in to Codex: run codex login in a terminal.");

    writeFile(home.path() + "/codex/auth.json", R"({"OPENAI_API_KEY":"sk-proj-secret"})");
    const AgentUsageReport keyOnly = c.fetch(AgentProvider::Codex, kNow);
    EXPECT_TRUE(keyOnly.limits.empty());
    EXPECT_EQ(keyOnly.notes, QStringList{"Codex is signed in with an API key, which is billed per "
                                         "token and has no plan limits."});
    EXPECT_TRUE(server.requests().empty());

    writeFile(home.path() + "/codex/auth.json",
              R"({"tokens":{"access_token":"tok-codex","account_id":"acc-9"}})");
    server.answer("/backend-api/wham/usage",
                  {200, R"({"plan_type":"pro","rate_limit":{"primary_window":{"used_percent":3,)"
                        R"("limit_window_seconds":18000,"reset_after_seconds":60}}})"});
    EXPECT_EQ(c.fetch(AgentProvider::Codex, kNow).limits.size(), 1u);
    EXPECT_EQ(server.requests().back().headers.at("chatgpt-account-id"), "acc-9");

    server.answer("/backend-api/wham/usage", {401, "{}"});
    EXPECT_EQ(failure(c, AgentProvider::Codex).message(),
              "Codex's sign-in has expired. Run codex login in a terminal.");
    // The newest session log still knows where the limits stood.
    writeFile(
        home.path() + "/codex/sessions/2026/11/20/old.jsonl",
        R"({"timestamp":"2026-11-20T10:00:00Z","payload":{"type":"token_count","rate_limits":)"
        R"({"primary":{"used_percent":99,"window_minutes":300}}}})"
        "\n");
    QThread::msleep(20);
    writeFile(
        home.path() + "/codex/sessions/2026/11/22/new.jsonl",
        R"({"timestamp":"2026-11-22T09:00:00Z","payload":{"type":"token_count","rate_limits":)"
        R"({"primary":{"used_percent":40,"window_minutes":300},)"
        R"("secondary":{"used_percent":10,"window_minutes":10080}}}})"
        "\n"
        R"({"timestamp":"2026-11-22T09:05:00Z","payload":{"type":"agent_message"}})"
        "\n");
    const AgentUsageReport logged = c.fetch(AgentProvider::Codex, kNow);
    ASSERT_EQ(logged.limits.size(), 2u);
    EXPECT_DOUBLE_EQ(logged.limits[0].used, 0.4);
    ASSERT_FALSE(logged.notes.isEmpty());
    EXPECT_TRUE(logged.notes.back().startsWith("As of your last Codex session, "));
    ::unsetenv("CODEX_HOME");
}

TEST(AgentUsageClient, CopilotAndOpenRouterWithSavedOrPastedKeys) {
    test::TempHome home;
    ScriptedServer server;
    auto none = client(server);
    EXPECT_EQ(failure(none, AgentProvider::Copilot).kind, AgentUsageError::Kind::NotSignedIn);
    const AgentUsageError noKey = failure(none, AgentProvider::OpenRouter);
    EXPECT_TRUE(noKey.message().startsWith("Paste an OpenRouter API key"));
    EXPECT_TRUE(noKey.message().contains("(make one at https://openrouter.ai/settings/keys)"));

    writeFile(home.path() + "/.config/github-copilot/hosts.json",
              R"({"github.com":{"user":"octo","oauth_token":"gho_plugin"}})");
    server.answer("/copilot_internal/user",
                  {200, R"({"login":"octo","copilot_plan":"free","limited_user_quotas":{"chat":5},)"
                        R"("monthly_quotas":{"chat":50}})"});
    EXPECT_EQ(none.fetch(AgentProvider::Copilot, kNow).limits.size(), 1u);
    EXPECT_EQ(server.requests().back().headers.at("authorization"), "token gho_plugin");
    EXPECT_EQ(server.requests().back().headers.at("x-github-api-version"), "2025-04-01");

    auto pasted = client(server, QString("ghp_pasted"));
    pasted.fetch(AgentProvider::Copilot, kNow); // a pasted token comes first
    EXPECT_EQ(server.requests().back().headers.at("authorization"), "token ghp_pasted");
    server.answer("/copilot_internal/user", {403, "{}"});
    EXPECT_EQ(failure(pasted, AgentProvider::Copilot).kind, AgentUsageError::Kind::Expired);

    server.answer("/api/v1/key", {200, R"({"data":{"label":"mine","usage":1,"limit":10}})"});
    server.answer("/api/v1/credits", {200, R"({"data":{"total_credits":20,"total_usage":1}})"});
    const auto r = pasted.fetch(AgentProvider::OpenRouter, kNow);
    EXPECT_EQ(r.account, "mine");
    EXPECT_EQ(server.requests().back().headers.at("authorization"), "Bearer ghp_pasted");
    server.answer("/api/v1/credits", {401, "{}"});
    EXPECT_EQ(failure(pasted, AgentProvider::OpenRouter).message(),
              "OpenRouter rejected the API key. Paste a valid one.");

    // Nobody listening.
    AgentUsageClient::Options o;
    o.endpoints.openRouter = QUrl("http://127.0.0.1:1/");
    o.pastedKey = [](AgentProvider) {
        return std::optional<QString>("k");
    };
    AgentUsageClient closed(o);
    EXPECT_EQ(failure(closed, AgentProvider::OpenRouter).kind, AgentUsageError::Kind::Network);
}

TEST(AgentUsageClient, AKeyIsNeverSentOnToAnotherOriginByARedirect) {
    test::TempHome home;
    ScriptedServer service;
    ScriptedServer elsewhere;
    elsewhere.answer("/api/v1/key", {200, R"({"data":{"label":"stolen"}})"});
    // The same machine under another name is another origin all the same.
    const QByteArray away =
        QStringLiteral("http://localhost:%1/api/v1/key").arg(elsewhere.url().port()).toUtf8();
    service.answer("/api/v1/key", {302, {}, {{"Location", away}}});
    auto c = client(service, QString("sk-or-secret"));
    const AgentUsageError e = failure(c, AgentProvider::OpenRouter);
    EXPECT_EQ(e.message(), "The server answered with HTTP 302");
    for (const auto& r : elsewhere.requests()) {
        EXPECT_EQ(r.headers.count("authorization"), 0u) << "the key went to " << away.toStdString();
    }
    EXPECT_TRUE(elsewhere.requests().empty());

    // Within the same origin a redirect is followed, key and all.
    service.answer("/api/v1/key", {301, {}, {{"Location", "/api/v1/key2"}}});
    service.answer("/api/v1/key2", {200, R"({"data":{"label":"mine","usage":1,"limit":10}})"});
    service.answer("/api/v1/credits", {200, R"({"data":{"total_credits":20,"total_usage":1}})"});
    EXPECT_EQ(c.fetch(AgentProvider::OpenRouter, kNow).account, "mine");
}

TEST(AgentUsageClient, AMalformedSignInFileIsNoSignIn) {
    test::TempHome home;
    ScriptedServer server;
    auto c = client(server);
    writeFile(home.path() + "/.claude/.credentials.json", "{\"claudeAiOauth\": {\"accessTo");
    EXPECT_EQ(failure(c, AgentProvider::Claude).kind, AgentUsageError::Kind::NotSignedIn);
    ::setenv("CODEX_HOME", (home.path() + "/codex").toLocal8Bit().constData(), 1);
    writeFile(home.path() + "/codex/auth.json", "[]");
    EXPECT_EQ(failure(c, AgentProvider::Codex).kind, AgentUsageError::Kind::NotSignedIn);
    ::unsetenv("CODEX_HOME");
    EXPECT_TRUE(server.requests().empty());
}

TEST(AgentUsageClient, ARequestNoLongerWantedIsAbandonedAtOnce) {
    test::TempHome home;
    ScriptedServer server;
    signInClaude(home, kNow.addSecs(3600).toMSecsSinceEpoch());
    server.answer("/api/oauth/usage", {200, "{}", {}, 30'000});
    std::atomic<bool> cancel = false;
    AgentUsageClient::Options o;
    o.endpoints = {server.url(), server.url(), server.url(), server.url()};
    o.cancel = &cancel;
    AgentUsageClient c(o);
    // The flag is set from the client's own event loop once the request has gone out.
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] { cancel = !server.requests().empty(); });
    watch.start(10);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(failure(c, AgentProvider::Claude).kind, AgentUsageError::Kind::Network);
    EXPECT_LT(clock.elapsed(), 10'000); // did not wait for the answer
}

TEST(AgentUsageClient, AnswersThatBreakHttpEndInPlainWordsHoldingLittle) {
    test::TempHome home;
    signInClaude(home, kNow.addSecs(3600).toMSecsSinceEpoch());
    ScriptedServer server;
    auto c = client(server); // 2 s for each answer
    const QByteArray usage =
        R"({"five_hour":{"utilization":12,"resets_at":"2030-01-01T00:00:00Z"}})";
    const QString tooLarge = "The service's answer was too large for a usage report.";
    const QString noAnswer = "Couldn't connect: No answer within 2 s";
    const QString notUnderstood = "Claude's usage response wasn't understood.";
    // The report read ("12% used"), or the error's words.
    const std::map<HostileAnswer, QString> expected = {
        {HostileAnswer::EndlessHeaders, noAnswer},
        {HostileAnswer::LongerThanDeclared, "12% used"}, // the declared answer, and no more
        {HostileAnswer::EndlessChunks, tooLarge},
        {HostileAnswer::EndlessUnsized, tooLarge},
        {HostileAnswer::Trickle, noAnswer},
        {HostileAnswer::GzipBomb, tooLarge},
        {HostileAnswer::InvalidUtf8, notUnderstood},
        {HostileAnswer::DeepArrays, notUnderstood},
        {HostileAnswer::DeepObjects, notUnderstood},
    };
    for (const HostileAnswer how : tools::hostileAnswers()) {
        SCOPED_TRACE(tools::name(how).toStdString());
        server.answer("/api/oauth/usage", {200, usage, {}, 0, how});
        QString said;
        QElapsedTimer clock;
        clock.start();
        const double held = test::heapGrowthMiB([&] {
            try {
                const AgentUsageReport r = c.fetch(AgentProvider::Claude, kNow);
                said = r.limits.empty() ? QString() : percentUsed(r.limits.front().used);
            } catch (const AgentUsageError& e) {
                said = e.message();
            }
        });
        EXPECT_EQ(said.toStdString(), expected.at(how).toStdString());
        // Within the answer's 2 s; headers that never end also keep Qt's network thread reading
        // them, which the client gives up waiting for after 5 s.
        EXPECT_LT(clock.elapsed(), 15'000);
        EXPECT_LT(held, 48) << held; // at most the 4 MiB an answer may hold, and buffers
    }

    // After all that, the same client reads a good answer at once.
    server.answer("/api/oauth/usage", {200, usage});
    EXPECT_EQ(c.fetch(AgentProvider::Claude, kNow).limits.size(), 1u);

    // Nesting that deep is refused by Qt's parser itself, at its limit of 1,024 levels.
    for (const QByteArray& deep :
         {QByteArray(100'000, '[') + QByteArray(100'000, ']'),
          QByteArray(R"({"a":)").repeated(100'000) + "1" + QByteArray(100'000, '}')}) {
        QJsonParseError error;
        EXPECT_TRUE(QJsonDocument::fromJson(deep, &error).isNull());
        EXPECT_EQ(error.error, QJsonParseError::DeepNesting);
    }
}
