// tarvik ps, tarvik quit and tarvik health: the process table and the health check.
#include "cli/commands.h"
#include "cli/output.h"
#include "core/monitor/process_control.h"
#include "core/monitor/process_naming.h"
#include "core/monitor/process_order.h"
#include "core/monitor/system_health.h"
#include "core/monitor/system_sampler.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"

#include <QJsonArray>
#include <QJsonObject>
#include <chrono>
#include <memory>
#include <optional>
#include <pwd.h>
#include <thread>
#include <unistd.h>

namespace tarvik::cli {
namespace {

QString userName(std::uint32_t uid) {
    passwd entry{};
    passwd* found = nullptr;
    char buffer[4096];
    if (getpwuid_r(uid, &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr) {
        return QString::fromLocal8Bit(found->pw_name);
    }
    return QString::number(uid);
}

QString displayName(const ProcessUsage& p, const DesktopApplications& apps) {
    if (const DesktopApplication* app = apps.find(p)) {
        return app->name;
    }
    return QString::fromStdString(ProcessNaming::displayName(p.path, p.name));
}

// Two samples `seconds` apart: CPU shares need an interval.
std::vector<ProcessUsage> sampleProcesses(double seconds) {
    SystemSampler sampler;
    sampler.sample(true);
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    return std::move(*sampler.sample(true).processes);
}

struct PsOptions {
    std::string sort = "cpu";
    std::optional<int> limit; // 20 on a terminal, all for --json
    double interval = 0.5;
    bool json = false;
};

int runPs(const PsOptions& o) {
    std::vector<ProcessUsage> processes = sampleProcesses(o.interval);
    sortProcesses(processes, *processSortFromKey(o.sort));
    const std::uint64_t total = totalProcessMemory(processes);
    const std::size_t count = processes.size();
    // A script reading JSON gets every process unless it asks for fewer.
    const int limit = o.limit.value_or(o.json ? 0 : 20);
    if (limit > 0 && processes.size() > static_cast<std::size_t>(limit)) {
        processes.resize(static_cast<std::size_t>(limit));
    }
    const auto apps = DesktopApplications::load(DesktopApplications::defaultFolders());
    if (o.json) {
        QJsonArray rows;
        for (const auto& p : processes) {
            QJsonObject row;
            row[QStringLiteral("pid")] = p.pid;
            row[QStringLiteral("name")] = QString::fromStdString(p.name);
            row[QStringLiteral("displayName")] = displayName(p, apps);
            row[QStringLiteral("path")] =
                p.path ? QJsonValue(QString::fromStdString(*p.path)) : QJsonValue();
            row[QStringLiteral("cpuPercent")] = p.cpuPercent;
            row[QStringLiteral("memory")] = static_cast<double>(p.memory);
            row[QStringLiteral("user")] = userName(p.uid);
            row[QStringLiteral("kernelThread")] = p.kernelThread;
            row[QStringLiteral("canQuit")] = ProcessGuard::canQuit(p, getpid(), geteuid());
            rows.append(row);
        }
        QJsonObject o2;
        o2[QStringLiteral("processes")] = rows;
        o2[QStringLiteral("count")] = static_cast<double>(count);
        o2[QStringLiteral("totalMemory")] = static_cast<double>(total);
        printJson(QJsonDocument(o2));
        return kExitOk;
    }
    printLine(QStringLiteral("%1  %2  %3  %4  %5")
                  .arg(QStringLiteral("PID"), 7)
                  .arg(QStringLiteral("CPU %"), 6)
                  .arg(QStringLiteral("MEMORY"), 9)
                  .arg(QStringLiteral("USER"), -10)
                  .arg(QStringLiteral("NAME")));
    for (const auto& p : processes) {
        printLine(QStringLiteral("%1  %2  %3  %4  %5")
                      .arg(p.pid, 7)
                      .arg(p.cpuPercent, 6, 'f', 1)
                      .arg(MetricFormat::bytes(static_cast<std::int64_t>(p.memory)), 9)
                      .arg(userName(p.uid).left(10), -10)
                      .arg(displayName(p, apps)));
    }
    printLine(QStringLiteral("%1, %2 in memory")
                  .arg(countOf(count, u"process", u"processes"),
                       MetricFormat::bytes(static_cast<std::int64_t>(total))));
    return kExitOk;
}

int runQuit(std::int32_t pid, bool force) {
    SystemSampler sampler;
    const auto processes = *sampler.sample(true).processes;
    const auto it = std::find_if(processes.begin(), processes.end(),
                                 [pid](const ProcessUsage& p) { return p.pid == pid; });
    if (it == processes.end()) {
        printError(QStringLiteral("No process has the ID %1.").arg(pid));
        return kExitFailed;
    }
    const QString name = processLabel(
        displayName(*it, DesktopApplications::load(DesktopApplications::defaultFolders())), pid);
    const QuitRefusal refusal = ProcessGuard::refusal(*it, getpid(), geteuid());
    if (refusal != QuitRefusal::None) {
        printError(quitMessage(name, refusal, QuitOutcome::Refused));
        return kExitRefused;
    }
    const QuitOutcome outcome = ProcessControl::quit(*it, force, force ? 1000 : 3000);
    if (outcome == QuitOutcome::Ended) {
        printLine(QStringLiteral("%1 has quit.").arg(name));
        return kExitOk;
    }
    printError(quitMessage(name, QuitRefusal::None, outcome));
    return kExitFailed;
}

QJsonObject toJson(const HealthIssue& issue) {
    QJsonObject o;
    o[QStringLiteral("id")] = issue.id;
    o[QStringLiteral("severity")] = rawValue(issue.severity);
    o[QStringLiteral("title")] = issue.title;
    o[QStringLiteral("detail")] = issue.detail;
    o[QStringLiteral("symbol")] = issue.symbol;
    o[QStringLiteral("remedy")] = issue.remedy ? QJsonValue(rawValue(*issue.remedy)) : QJsonValue();
    return o;
}

// What each remedy means on the command line.
QString remedyHint(HealthIssue::Remedy remedy) {
    switch (remedy) {
    case HealthIssue::Remedy::ShowProcessesByMemory:
        return QStringLiteral("tarvik ps --sort memory");
    case HealthIssue::Remedy::ShowProcessesByCPU:
        return QStringLiteral("tarvik ps --sort cpu");
    case HealthIssue::Remedy::OpenSystemJunk:
        return QStringLiteral("tarvik junk");
    case HealthIssue::Remedy::ExplainRestart:
        return restartAdvice();
    }
    return {};
}

int runHealth(double seconds, bool json) {
    // Five CPU loads over the period, as the window's history would hold them.
    SystemSampler sampler;
    sampler.sample();
    std::vector<double> cpu;
    SystemReading last;
    const auto step = std::chrono::duration<double>(seconds / 5.0);
    for (int i = 0; i < 5; ++i) {
        std::this_thread::sleep_for(step);
        last = sampler.sample(i >= 3); // the last two also read processes, for the busiest
        if (last.cpu) {
            cpu.push_back(last.cpu->total());
        }
    }
    const auto processes = last.processes;
    const auto issues =
        SystemHealth::assess(healthInput(last, std::move(cpu), processes ? &*processes : nullptr));
    if (json) {
        QJsonArray rows;
        for (const auto& issue : issues) {
            rows.append(toJson(issue));
        }
        printJson(QJsonDocument(rows));
        return kExitOk;
    }
    if (issues.empty()) {
        printLine(QStringLiteral("Nothing needs your attention."));
    }
    for (const auto& issue : issues) {
        printLine((issue.severity == HealthIssue::Severity::Critical ? QStringLiteral("!! ")
                                                                     : QStringLiteral("!  ")) +
                  issue.title);
        printLine(QStringLiteral("   ") + issue.detail);
        if (issue.remedy) {
            printLine(QStringLiteral("   ") + remedyHint(*issue.remedy));
        }
    }
    return kExitOk;
}

} // namespace

std::vector<HealthIssue> quickHealthIssues() {
    SystemSampler sampler;
    return SystemHealth::assess(healthInput(sampler.sample(), {}, nullptr));
}

void addProcessCommands(CLI::App& app, CommandResult& result) {
    auto ps = std::make_shared<PsOptions>();
    auto* psCmd = app.add_subcommand("ps", "List running processes by CPU, memory or name");
    psCmd->add_option("--sort", ps->sort, "cpu, memory, name or pid (default cpu)")
        ->check(CLI::IsMember({"cpu", "memory", "name", "pid"}));
    psCmd
        ->add_option("--limit", ps->limit,
                     "Show this many (default 20, all with --json; 0 shows all)")
        ->check(CLI::Range(0, 1'000'000));
    psCmd
        ->add_option("--interval", ps->interval,
                     "Seconds between the two samples the CPU share comes from (default 0.5)")
        ->check(CLI::Range(0.1, 10.0));
    psCmd->add_flag("--json", ps->json, "Print JSON for scripts");
    psCmd->callback([ps, &result] {
        result.run = [ps] {
            return runPs(*ps);
        };
    });

    struct QuitOptions {
        std::int32_t pid = 0;
        bool force = false;
    };
    auto quit = std::make_shared<QuitOptions>();
    auto* quitCmd = app.add_subcommand(
        "quit", "Ask a process to quit, or force it (exit status: 0 ended, 1 didn't, 3 refused)");
    quitCmd->add_option("PID", quit->pid, "The process ID")->required()->check(CLI::PositiveNumber);
    quitCmd->add_flag("--force", quit->force, "End it at once; unsaved work is lost");
    quitCmd->callback([quit, &result] {
        result.run = [quit] {
            return runQuit(quit->pid, quit->force);
        };
    });

    struct HealthOptions {
        double seconds = 2.0;
        bool json = false;
    };
    auto health = std::make_shared<HealthOptions>();
    auto* healthCmd = app.add_subcommand(
        "health", "Check memory, swap, CPU, heat, disk space, battery and uptime");
    healthCmd
        ->add_option("--seconds", health->seconds,
                     "How long to watch the CPU before judging it (default 2)")
        ->check(CLI::Range(0.5, 60.0));
    healthCmd->add_flag("--json", health->json, "Print JSON for scripts");
    healthCmd->callback([health, &result] {
        result.run = [health] {
            return runHealth(health->seconds, health->json);
        };
    });
}

} // namespace tarvik::cli
