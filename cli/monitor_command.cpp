#include "cli/commands.h"
#include "cli/output.h"
#include "core/monitor/process_order.h"
#include "core/monitor/reading_report.h"
#include "core/monitor/system_sampler.h"
#include "core/settings/preferences.h"

#include <QJsonDocument>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

namespace tarvik::cli {
namespace {

struct MonitorOptions {
    double interval = 0; // 0: from the preference
    int count = 0;       // 0: until interrupted
    bool once = false;
    bool json = false;
};

void printReading(const SystemReading& reading, const CPUTopology& topology, bool json,
                  bool redraw) {
    if (json) {
        const QByteArray line =
            QJsonDocument(toJson(reading, topology)).toJson(QJsonDocument::Compact);
        std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
        std::fputc('\n', stdout);
    } else {
        if (redraw) {
            std::fputs("\x1b[H\x1b[2J", stdout); // home and clear: redraw in place
        }
        std::vector<std::pair<QString, QString>> rows;
        for (const auto& row : describeReading(reading, topology)) {
            rows.emplace_back(row.label, row.value);
        }
        printRows(rows);
        if (!redraw) {
            std::fputc('\n', stdout);
        }
    }
    std::fflush(stdout);
}

int runMonitor(const MonitorOptions& o) {
    const Preferences prefs;
    const double interval =
        o.interval > 0 ? o.interval
                       : clampedMonitorInterval(prefs.isStored(pref::kMonitorInterval)
                                                    ? std::optional(prefs.monitorInterval())
                                                    : std::nullopt);
    const auto pause = std::chrono::duration<double>(interval);
    SystemSampler sampler;
    // Rates need two samples: the first only sets the baseline.
    sampler.sample();
    std::this_thread::sleep_for(pause);
    const bool redraw = !o.json && stdoutIsTerminal();
    const int count = o.once ? 1 : o.count;
    for (int i = 0; count == 0 || i < count; ++i) {
        if (i > 0) {
            std::this_thread::sleep_for(pause);
        }
        printReading(sampler.sample(), sampler.topology(), o.json, redraw);
    }
    return kExitOk;
}

} // namespace

void addMonitorCommand(CLI::App& app, CommandResult& result) {
    auto options = std::make_shared<MonitorOptions>();
    auto* cmd = app.add_subcommand("monitor", "Show live CPU, memory, network, disk, GPU and "
                                              "battery readings");
    cmd->add_option("--interval", options->interval, "Seconds between readings (0.2 to 60)")
        ->check(CLI::Range(0.2, 60.0));
    cmd->add_option("--count", options->count, "Stop after this many readings")
        ->check(CLI::Range(1, 1'000'000));
    cmd->add_flag("--once", options->once, "One reading (sampled twice, an interval apart)");
    cmd->add_flag("--json", options->json, "Print JSON for scripts (one object per line)");
    cmd->callback([options, &result] {
        result.run = [options] {
            return runMonitor(*options);
        };
    });
}

} // namespace tarvik::cli
