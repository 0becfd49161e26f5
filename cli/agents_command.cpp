// tarvik agents: the AI coding agents' plan limits, their estimated spend, and pasted keys.
#include "cli/commands.h"
#include "cli/output.h"
#include "core/agents/limits/agent_usage_client.h"
#include "core/agents/limits/agent_usage_json.h"
#include "core/agents/spend/local_usage_logs.h"
#include "core/agents/spend/usage_format.h"
#include "core/agents/spend/usage_period.h"
#include "core/agents/spend/usage_summary.h"
#include "core/settings/preferences.h"
#include "core/sys/secret_store.h"

#include <QFuture>
#include <QJsonArray>
#include <QtConcurrent/QtConcurrentRun>
#include <cstdio>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <variant>

namespace tarvik::cli {
namespace {

using Outcome = std::variant<AgentUsageReport, AgentUsageError>;

std::vector<AgentProvider> enabledProviders() {
    const Preferences prefs;
    std::vector<AgentProvider> out;
    for (const auto& [provider, on] :
         providersInOrder(prefs.value(pref::kAgentUsageOrder).toString(),
                          prefs.value(pref::kAgentUsageEnabled).toString())) {
        if (on) {
            out.push_back(provider);
        }
    }
    return out;
}

void printReport(const AgentUsageReport& r, const QDateTime& now) {
    const ReportWords words = describe(r, now);
    QString heading = title(r.provider);
    if (!words.about.isEmpty()) {
        heading += QStringLiteral(" — ") + words.about;
    }
    printLine(heading);
    std::vector<std::pair<QString, QString>> rows;
    for (const auto* lines : {&words.limits, &words.credits}) {
        for (const ReportWords::Line& line : *lines) {
            rows.emplace_back(QStringLiteral("  ") + line.title, line.text);
        }
    }
    if (!rows.empty()) {
        printRows(rows);
    }
    for (const QString& note : r.notes) {
        printLine(QStringLiteral("  ") + note);
    }
}

int runAgents(bool json) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const std::vector<AgentProvider> providers = enabledProviders();
    // Pasted keys are read here: the keyring answers on this thread's event loop.
    std::map<AgentProvider, std::optional<QString>> keys;
    const SecretStore store(QString::fromLatin1(kAgentKeysService));
    for (AgentProvider p : {AgentProvider::Copilot, AgentProvider::OpenRouter}) {
        if (std::find(providers.begin(), providers.end(), p) != providers.end()) {
            keys[p] = store.read(pastedKeyName(p));
        }
    }
    // All providers at once, each on a thread with its own client and connection.
    std::vector<QFuture<Outcome>> futures;
    for (AgentProvider p : providers) {
        futures.push_back(QtConcurrent::run([p, now, keys]() -> Outcome {
            try {
                AgentUsageClient::Options options;
                options.pastedKey = [&keys](AgentProvider which) {
                    const auto it = keys.find(which);
                    return it == keys.end() ? std::nullopt : it->second;
                };
                AgentUsageClient client(options);
                return client.fetch(p, now);
            } catch (const AgentUsageError& e) {
                return e;
            }
        }));
    }
    int succeeded = 0;
    QJsonArray out;
    for (std::size_t i = 0; i < providers.size(); ++i) {
        const Outcome o = futures[i].result();
        if (const auto* report = std::get_if<AgentUsageReport>(&o)) {
            ++succeeded;
            if (json) {
                out.append(toJson(*report, now));
            } else {
                printReport(*report, now);
            }
        } else {
            const auto& error = std::get<AgentUsageError>(o);
            if (json) {
                QJsonObject j;
                j[QStringLiteral("provider")] = rawValue(providers[i]);
                j[QStringLiteral("title")] = title(providers[i]);
                j[QStringLiteral("error")] = toJson(error);
                out.append(j);
            } else {
                printLine(title(providers[i]));
                printLine(QStringLiteral("  ") + error.message());
                // Where the window has a field to paste into, the terminal has a command.
                if (error.kind == AgentUsageError::Kind::NotSignedIn) {
                    if (providers[i] == AgentProvider::OpenRouter) {
                        printLine(QStringLiteral("  Save one with: tarvik agents key set "
                                                 "openrouter < key.txt"));
                    } else if (providers[i] == AgentProvider::Copilot) {
                        printLine(QStringLiteral("  Save one with: tarvik agents key set github "
                                                 "< token.txt"));
                    }
                }
            }
        }
        if (!json && i + 1 < providers.size()) {
            printLine({});
        }
    }
    if (json) {
        printJson(QJsonDocument(out));
    } else if (providers.empty()) {
        printLine(QStringLiteral("No agents are enabled (tarvik settings set agentUsage.enabled "
                                 "claude,codex,copilot,openRouter)."));
    }
    return providers.empty() || succeeded > 0 ? kExitOk : kExitFailed;
}

int runCost(const std::string& periodName, bool json) {
    const UsagePeriod period = *usagePeriodFromRaw(QString::fromStdString(periodName));
    const QDateTime now = QDateTime::currentDateTime();
    const LocalUsageLogs::Found found = LocalUsageLogs::read(interval(period, now).start);
    const auto& events = found.events;
    const UsageSummary summary = UsageSummary::of(events, period, now);
    if (json) {
        QJsonObject o;
        o[QStringLiteral("period")] = rawValue(period);
        o[QStringLiteral("totalCost")] = summary.totalCost;
        o[QStringLiteral("totalTokens")] = static_cast<double>(summary.totalTokens);
        QJsonArray models;
        for (const ModelLine& line : summary.models) {
            QJsonObject m;
            m[QStringLiteral("model")] = line.model;
            m[QStringLiteral("cost")] = line.cost ? QJsonValue(*line.cost) : QJsonValue();
            m[QStringLiteral("tokens")] = static_cast<double>(line.tokens);
            models.append(m);
        }
        o[QStringLiteral("models")] = models;
        QJsonArray days;
        for (const DailySpend& d : DailySpend::series(events, period, now)) {
            QJsonObject j;
            j[QStringLiteral("day")] = d.day.toString(Qt::ISODate);
            j[QStringLiteral("cost")] = d.cost;
            j[QStringLiteral("tokens")] = static_cast<double>(d.tokens);
            days.append(j);
        }
        o[QStringLiteral("days")] = days;
        o[QStringLiteral("skippedLines")] = static_cast<double>(found.skippedLines);
        printJson(QJsonDocument(o));
        return kExitOk;
    }
    printLine(QString::fromLatin1(kSpendBasis));
    if (const QString note = UsageFormat::skippedLines(found.skippedLines); !note.isEmpty()) {
        printLine(note);
    }
    if (summary.models.empty()) {
        printLine(UsageFormat::noUsage(period));
        return kExitOk;
    }
    printLine(QStringLiteral("%1: %2 · %3 tokens")
                  .arg(title(period), UsageFormat::dollars(summary.totalCost),
                       UsageFormat::tokens(summary.totalTokens)));
    std::vector<std::pair<QString, QString>> rows;
    for (const ModelLine& line : summary.models) {
        rows.emplace_back(
            QStringLiteral("  ") + line.model,
            (line.cost ? UsageFormat::dollars(*line.cost) : QStringLiteral("no price")) +
                QStringLiteral(" · ") + UsageFormat::tokens(line.tokens) +
                QStringLiteral(" tokens"));
    }
    printRows(rows);
    return kExitOk;
}

std::optional<AgentProvider> keyProvider(const std::string& name) {
    if (name == "openrouter") {
        return AgentProvider::OpenRouter;
    }
    if (name == "github") {
        return AgentProvider::Copilot;
    }
    return std::nullopt;
}

int runKeySet(const std::string& name) {
    std::string line;
    std::getline(std::cin, line);
    const QString key = QString::fromStdString(line).trimmed();
    if (key.isEmpty()) {
        printError(QStringLiteral("No key on standard input. Pipe it in, for example: "
                                  "tarvik agents key set %1 < key.txt")
                       .arg(QString::fromStdString(name)));
        return kExitUsage;
    }
    const auto result = SecretStore(QString::fromLatin1(kAgentKeysService))
                            .write(pastedKeyName(*keyProvider(name)), key);
    if (!result.ok) {
        printError(result.error);
        return kExitFailed;
    }
    printLine(QStringLiteral("The %1 key is saved in your keyring.")
                  .arg(name == "github" ? QStringLiteral("GitHub") : QStringLiteral("OpenRouter")));
    return kExitOk;
}

int runKeyClear(const std::string& name) {
    const auto result = SecretStore(QString::fromLatin1(kAgentKeysService))
                            .remove(pastedKeyName(*keyProvider(name)));
    if (!result.ok) {
        printError(result.error);
        return kExitFailed;
    }
    printLine(QStringLiteral("The %1 key is removed from your keyring.")
                  .arg(name == "github" ? QStringLiteral("GitHub") : QStringLiteral("OpenRouter")));
    return kExitOk;
}

} // namespace

void addAgentsCommand(CLI::App& app, CommandResult& result) {
    auto json = std::make_shared<bool>(false);
    auto* cmd = app.add_subcommand(
        "agents", "Plan limits of Claude Code, Codex, GitHub Copilot and OpenRouter");
    cmd->add_flag("--json", *json, "Print JSON for scripts");
    cmd->callback([json, &result, cmd] {
        if (cmd->get_subcommands().empty()) {
            result.run = [json] {
                return runAgents(*json);
            };
        }
    });

    auto period = std::make_shared<std::string>("today");
    auto costJson = std::make_shared<bool>(false);
    auto* cost = cmd->add_subcommand(
        "cost", "Estimated spend from local Claude Code and Codex logs at public API prices");
    cost->add_option("--period", *period, "today, yesterday or 30d (default today)")
        ->check(CLI::IsMember({"today", "yesterday", "30d"}));
    cost->add_flag("--json", *costJson, "Print JSON for scripts");
    cost->callback([period, costJson, &result] {
        result.run = [period, costJson] {
            return runCost(*period, *costJson);
        };
    });

    auto* key = cmd->add_subcommand("key", "Keep or remove a pasted key in your keyring");
    key->require_subcommand(1);
    auto name = std::make_shared<std::string>();
    auto* set = key->add_subcommand("set", "Save a key read from standard input");
    set->add_option("PROVIDER", *name, "openrouter or github")
        ->required()
        ->check(CLI::IsMember({"openrouter", "github"}));
    set->callback([name, &result] {
        result.run = [name] {
            return runKeySet(*name);
        };
    });
    auto* clear = key->add_subcommand("clear", "Remove a saved key");
    clear->add_option("PROVIDER", *name, "openrouter or github")
        ->required()
        ->check(CLI::IsMember({"openrouter", "github"}));
    clear->callback([name, &result] {
        result.run = [name] {
            return runKeyClear(*name);
        };
    });
}

} // namespace tarvik::cli
