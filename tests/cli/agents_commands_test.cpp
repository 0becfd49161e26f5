// tarvik agents: limits from the services, keys in the keyring, spend from the logs.
#include "tests/support/scripted_server.h"
#include "tests/support/tarvik_command.h"
#include "tests/support/tarvik_run.h"
#include "tests/support/temp_home.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

using tarvik::test::readAll;
using tarvik::test::writeFile;

using tarvik::test::Outcome;
using tarvik::test::TarvikCommand;

TEST_F(TarvikCommand, AgentsFetchEveryEnabledProviderAndSayWhatIsMissing) {
    tarvik::test::ScriptedServer server;
    writeFile(home_.path() + "/.claude/.credentials.json",
              R"({"claudeAiOauth":{"accessToken":"tok","subscriptionType":"pro"}})");
    server.answer("/api/oauth/usage",
                  {200, R"({"five_hour":{"utilization":50,"resets_at":"2099-01-01T00:00:00Z"},)"
                        R"("seven_day":{"utilization":5}})"});
    server.answer("/backend-api/wham/usage", {429, "{}", {{"Retry-After", "90"}}});
    writeFile(home_.path() + "/.codex/auth.json", R"({"tokens":{"access_token":"t"}})");
    for (const char* name :
         {"TARVIK_CLAUDE_API", "TARVIK_CODEX_API", "TARVIK_COPILOT_API", "TARVIK_OPENROUTER_API"}) {
        env_[name] = server.url().toString();
    }
    env_["PATH"] = "/nonexistent";                               // no gh to ask
    env_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"; // no keyring either
    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.order", "codex,claude"}).exitCode, 0);

    const Outcome json = tarvik({"agents", "--json"});
    ASSERT_EQ(json.exitCode, 0) << json.err.toStdString();
    const QJsonArray cards = QJsonDocument::fromJson(json.out.toUtf8()).array();
    ASSERT_EQ(cards.size(), 4);
    EXPECT_EQ(cards[0].toObject()["provider"], "codex"); // the stored order, then the rest
    EXPECT_EQ(cards[0].toObject()["error"].toObject()["kind"], "rateLimited");
    EXPECT_EQ(cards[0].toObject()["error"].toObject()["retryAfter"], 90);
    const QJsonObject claude = cards[1].toObject();
    EXPECT_EQ(claude["plan"], "Pro");
    EXPECT_EQ(claude["limits"].toArray()[0].toObject()["used"], 0.5);
    EXPECT_EQ(cards[2].toObject()["error"].toObject()["kind"], "notSignedIn");
    EXPECT_EQ(cards[3].toObject()["provider"], "openRouter");

    const Outcome text = tarvik({"agents"});
    EXPECT_TRUE(text.out.contains("Claude — Pro")) << text.out.toStdString();
    EXPECT_TRUE(text.out.contains("50% used"));
    EXPECT_TRUE(text.out.contains("The service is asking Tarvik to slow down."));

    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.enabled", "copilot"}).exitCode, 0);
    EXPECT_EQ(tarvik({"agents"}).exitCode, 1); // the only enabled agent failed
    EXPECT_EQ(tarvik({"agents", "key", "set", "anthropic"}).exitCode, 2);
    EXPECT_EQ(tarvik({"agents", "key", "set", "openrouter"}).exitCode, 2); // nothing on stdin
}

TEST_F(TarvikCommand, AgentsSayWhenAServiceFloodsOrBombsAndHoldLittle) {
    tarvik::test::ScriptedServer server;
    writeFile(home_.path() + "/.claude/.credentials.json",
              R"({"claudeAiOauth":{"accessToken":"tok","subscriptionType":"pro"}})");
    writeFile(home_.path() + "/.codex/auth.json", R"({"tokens":{"access_token":"t"}})");
    server.answer("/api/oauth/usage",
                  {200, "{}", {}, 0, tarvik::tools::HostileAnswer::EndlessChunks});
    server.answer("/backend-api/wham/usage",
                  {200, "{}", {}, 0, tarvik::tools::HostileAnswer::GzipBomb});
    for (const char* name : {"TARVIK_CLAUDE_API", "TARVIK_CODEX_API"}) {
        env_[name] = server.url().toString();
    }
    env_["PATH"] = "/nonexistent";
    env_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent";
    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.enabled", "claude,codex"}).exitCode, 0);

    const Outcome o = run_.measured({"agents", "--json"}, home_.path());
    const QJsonArray cards = QJsonDocument::fromJson(o.out.toUtf8()).array();
    ASSERT_EQ(cards.size(), 2) << o.out.toStdString() << o.err.toStdString();
    for (const auto& card : cards) {
        EXPECT_EQ(card.toObject()["error"].toObject()["message"],
                  "The service's answer was too large for a usage report.")
            << card.toObject()["provider"].toString().toStdString();
    }
    // An endless flood and 4 GiB inflated, each held to the few MiB an answer may take.
    EXPECT_LT(o.peakKiB, 300 * 1024) << "peak " << o.peakKiB << " KiB";
}

TEST_F(TarvikCommand, PastedKeysLiveInTheKeyringAndReachOnlyTheirService) {
    const QString dbus = QStandardPaths::findExecutable("dbus-daemon");
    const QString keyring = QStandardPaths::findExecutable("gnome-keyring-daemon");
    if (dbus.isEmpty() || keyring.isEmpty()) {
        GTEST_SKIP() << "needs dbus-daemon and gnome-keyring-daemon for a private Secret Service";
    }
    // A private session bus with an unlocked keyring of its own.
    QProcess bus;
    bus.start(dbus, {"--session", "--nofork", "--print-address=1"});
    ASSERT_TRUE(bus.waitForReadyRead(5000));
    const QString address = QString::fromUtf8(bus.readLine()).trimmed();
    QTemporaryDir runtime;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("DBUS_SESSION_BUS_ADDRESS", address);
    env.insert("XDG_RUNTIME_DIR", runtime.path());
    env.insert("HOME", home_.path());
    env.insert("XDG_DATA_HOME", home_.path() + "/.local/share");
    QProcess daemon;
    daemon.setProcessChannelMode(QProcess::MergedChannels);
    daemon.setProcessEnvironment(env);
    daemon.start(keyring, {"--foreground", "--unlock", "--components=secrets"});
    ASSERT_TRUE(daemon.waitForStarted(5000));
    daemon.write("test-password\n");
    daemon.waitForBytesWritten(5000);
    daemon.closeWriteChannel();
    // The keyring is ready once its login collection is on disk.
    const QString login = home_.path() + "/.local/share/keyrings/login.keyring";
    for (int i = 0; i < 100 && !QFile::exists(login); ++i) {
        QThread::msleep(50);
    }
    ASSERT_TRUE(QFile::exists(login))
        << "the private keyring did not start: " << daemon.readAll().toStdString();
    env_["DBUS_SESSION_BUS_ADDRESS"] = address;
    env_["XDG_RUNTIME_DIR"] = runtime.path();

    tarvik::test::ScriptedServer server;
    server.answer("/api/v1/key", {200, R"({"data":{"label":"mine","usage":2,"limit":10}})"});
    server.answer("/api/v1/credits", {200, R"({"data":{"total_credits":20,"total_usage":2}})"});
    env_["TARVIK_OPENROUTER_API"] = server.url().toString();
    ASSERT_EQ(tarvik({"settings", "set", "agentUsage.enabled", "openRouter"}).exitCode, 0);

    input_ = "sk-or-v1-secret\n";
    const Outcome saved = tarvik({"agents", "key", "set", "openrouter"});
    input_.clear();
    ASSERT_EQ(saved.exitCode, 0) << saved.err.toStdString();
    const Outcome fetched = tarvik({"agents", "--json"});
    ASSERT_EQ(fetched.exitCode, 0) << fetched.out.toStdString() << fetched.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(fetched.out.toUtf8()).array()[0].toObject()["account"],
              "mine");
    ASSERT_FALSE(server.requests().empty());
    EXPECT_EQ(server.requests().back().headers.at("authorization"), "Bearer sk-or-v1-secret");
    // The key is in the keyring, not in Tarvik's own files.
    EXPECT_FALSE(readAll(conf()).contains("sk-or-v1"));

    ASSERT_EQ(tarvik({"agents", "key", "clear", "openrouter"}).exitCode, 0);
    const Outcome cleared = tarvik({"agents", "--json"});
    EXPECT_EQ(QJsonDocument::fromJson(cleared.out.toUtf8())
                  .array()[0]
                  .toObject()["error"]
                  .toObject()["kind"],
              "notSignedIn");
    daemon.kill();
    daemon.waitForFinished();
    bus.kill();
    bus.waitForFinished();
}

TEST_F(TarvikCommand, AgentsCostAddsUpTodaysLocalLogsAtApiPrices) {
    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    const QString line =
        QString(R"({"timestamp":"%1","requestId":"req_1","message":{"id":"msg_1",)"
                R"("model":"claude-sonnet-4-5-20250929","usage":{"input_tokens":1000000,)"
                R"("output_tokens":0}}})")
            .arg(now);
    // Claude Code writes an answer more than once; it counts once.
    writeFile(home_.path() + "/.claude/projects/-home-me-app/session.jsonl",
              (line + "\n" + line + "\nnot json\n").toUtf8());
    writeFile(
        home_.path() + "/.codex/sessions/2026/11/22/rollout.jsonl",
        QString(R"({"timestamp":"%1","type":"turn_context","payload":{"model":"gpt-5-codex"}})"
                "\n"
                R"({"timestamp":"%1","type":"event_msg","payload":{"type":"token_count",)"
                R"("info":{"total_token_usage":{"input_tokens":1000000,)"
                R"("cached_input_tokens":0,"output_tokens":100000}}}})"
                "\n")
            .arg(now)
            .toUtf8());
    const Outcome json = tarvik({"agents", "cost", "--json"});
    ASSERT_EQ(json.exitCode, 0) << json.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_NEAR(o["totalCost"].toDouble(), 3.00 + 1.25 + 1.00, 1e-9);
    EXPECT_EQ(o["totalTokens"].toDouble(), 2'100'000);
    ASSERT_EQ(o["models"].toArray().size(), 2);
    EXPECT_EQ(o["models"].toArray()[0].toObject()["model"], "claude-sonnet-4-5-20250929");

    const Outcome text = tarvik({"agents", "cost", "--period", "yesterday"});
    EXPECT_TRUE(text.out.contains("Claude Code and Codex logged no usage yesterday."))
        << text.out.toStdString();
    EXPECT_EQ(tarvik({"agents", "cost", "--period", "week"}).exitCode, 2);
}
