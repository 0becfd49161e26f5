#include "cli/commands.h"
#include "cli/output.h"
#include "core/settings/preferences.h"
#include "core/speedtest/speed_test_engine.h"
#include "core/speedtest/speed_test_history.h"
#include "core/text/metric_format.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <memory>

namespace tarvik::cli {
namespace {

struct SpeedOptions {
    std::string baseUrl;
    double duration = 10.0;
    bool json = false;
};

std::atomic<bool> interrupted = false;
void onInterrupt(int) {
    interrupted = true;
}

void printResult(const SpeedTestResult& r) {
    std::vector<std::pair<QString, QString>> rows{
        {"Download", SpeedFormat::mbps(r.downloadMbps) + QStringLiteral(" Mbps")},
        {"Upload", SpeedFormat::mbps(r.uploadMbps) + QStringLiteral(" Mbps")},
        {"Ping", SpeedFormat::milliseconds(r.idleLatency)},
        {"Variation between pings", SpeedFormat::milliseconds(r.jitter)}};
    if (const auto loaded = r.loadedLatency()) {
        rows.emplace_back("Latency under load", SpeedFormat::milliseconds(*loaded));
    }
    if (const auto grade = r.bufferbloat()) {
        rows.emplace_back("Bufferbloat",
                          rawValue(*grade) + QStringLiteral(" — ") + summary(*grade));
    }
    for (auto useCase : kAllUseCases) {
        rows.emplace_back(title(useCase), title(verdict(useCase, r)));
    }
    rows.emplace_back("Data used", MetricFormat::bytes(r.dataUsed()));
    if (r.server && r.server->locationText()) {
        rows.emplace_back("Server", *r.server->locationText());
    }
    printRows(rows);
}

int runTest(const SpeedOptions& o) {
    SpeedTestConfiguration config;
    config.baseURL = Preferences().speedTestBaseURL();
    if (!o.baseUrl.empty()) {
        QUrl url(QString::fromStdString(o.baseUrl));
        if (!url.isValid() || url.scheme().isEmpty()) {
            printError(
                QStringLiteral("--base-url needs a full address, such as http://127.0.0.1:8080/."));
            return kExitUsage;
        }
        if (!url.path().endsWith(QLatin1Char('/'))) {
            url.setPath(url.path() + QLatin1Char('/'));
        }
        config.baseURL = url;
    }
    config.transferDuration = o.duration;
    config.warmup = std::min(config.warmup, o.duration / 4);
    const bool live = !o.json && stdoutIsTerminal();
    interrupted = false;
    std::signal(SIGINT, onInterrupt);
    std::optional<SpeedTestResult> result;
    try {
        result = SpeedTestEngine(config).run(
            std::nullopt,
            [live](const SpeedTestProgress& p) {
                if (!live) {
                    return;
                }
                QString line = QStringLiteral("%1 %2%")
                                   .arg(title(p.phase))
                                   .arg(qRound(p.overallFraction() * 100), 3);
                if (p.currentMbps && p.phase != SpeedTestPhase::Latency) {
                    line += QStringLiteral("  ") + SpeedFormat::mbps(*p.currentMbps) +
                            QStringLiteral(" Mbps");
                } else if (p.idleLatency) {
                    line += QStringLiteral("  ping ") + SpeedFormat::milliseconds(*p.idleLatency);
                }
                std::fprintf(stdout, "\r\x1b[2K%s", line.toUtf8().constData());
                std::fflush(stdout);
            },
            &interrupted);
    } catch (const SpeedTestError& e) {
        std::signal(SIGINT, SIG_DFL);
        if (live) {
            std::fputs("\r\x1b[2K", stdout);
        }
        printError(e.message());
        return kExitFailed;
    }
    std::signal(SIGINT, SIG_DFL);
    if (live) {
        std::fputs("\r\x1b[2K", stdout);
    }
    if (!result) {
        printError(QStringLiteral("The speed test was cancelled."));
        return kExitFailed;
    }
    if (!SpeedTestHistoryStore().add(*result)) {
        printError(QStringLiteral("Couldn't save the result to the history."));
    }
    if (o.json) {
        printJson(QJsonDocument(result->toJson()));
    } else {
        printResult(*result);
    }
    return kExitOk;
}

int showHistory(bool json) {
    const auto history = SpeedTestHistoryStore().load();
    if (json) {
        QJsonArray out;
        for (const auto& r : history) {
            out.append(r.toJson());
        }
        printJson(QJsonDocument(out));
        return kExitOk;
    }
    if (history.empty()) {
        printLine(QStringLiteral("No speed tests yet."));
    }
    for (const auto& r : history) {
        printLine(QStringLiteral("%1  ↓ %2 Mbps  ↑ %3 Mbps  ping %4%5")
                      .arg(r.date.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm")),
                           SpeedFormat::mbps(r.downloadMbps), SpeedFormat::mbps(r.uploadMbps),
                           SpeedFormat::milliseconds(r.idleLatency),
                           r.bufferbloat() ? QStringLiteral("  grade ") + rawValue(*r.bufferbloat())
                                           : QString()));
    }
    return kExitOk;
}

} // namespace

void addSpeedTestCommand(CLI::App& app, CommandResult& result) {
    auto o = std::make_shared<SpeedOptions>();
    auto* cmd =
        app.add_subcommand("speedtest", "Measure download, upload, ping and latency under load");
    cmd->add_option("--base-url", o->baseUrl, "The speed-test service's address");
    cmd->add_option("--duration", o->duration, "Seconds each way (a shorter test uses less data)")
        ->check(CLI::Range(1.0, 30.0));
    cmd->add_flag("--json", o->json, "Print JSON for scripts");
    cmd->callback([o, &result] {
        if (!result.run) {
            result.run = [o] {
                return runTest(*o);
            };
        }
    });
    auto* history = cmd->add_subcommand("history", "Show the results of earlier tests");
    history->add_flag("--json", o->json, "Print JSON for scripts");
    history->callback([o, &result] {
        result.run = [o] {
            return showHistory(o->json);
        };
    });
}

} // namespace tarvik::cli
