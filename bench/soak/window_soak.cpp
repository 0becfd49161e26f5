// The window opened, every screen shown in turn, and the window closed, many times over, as a
// person with a tray would: the screens see themselves shown and hidden, and start and stop
// what they hold (sampling, the agents' refresh, the overview's tick). The process's resident
// memory and open descriptors are compared between round 10 and the end.
//
// Runs offscreen in whatever home the environment names: bench/soak/window_soak.sh gives it a
// temporary one with the agents' services pointed at a local stand-in.
//
// usage: tarvik_soak_window [rounds] [section...]   (1000 rounds of every section; sections by
//        their keys, as `tarvik settings` and the command line name them: agents, monitor, …)

#include "app/shell/app_models.h"
#include "app/shell/main_window.h"
#include "app/shell/theme.h"
#include "bench/soak/process_use.h"
#include "core/shell/app_section.h"
#include "core/shell/startup.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using namespace tarvik;

constexpr int kWarmUpRounds = 10;
// Long enough on each screen for what its showing starts (a fetch, a scan) to get under way.
constexpr int kVisitMs = 20;
// Before a measurement: time for the work the last round started to finish and its sockets and
// threads to go.
constexpr int kQuietMs = 3000;
// Growth allowed between round 10 and the end: Qt's caches of drawn text and symbols settle
// in the first rounds; a leak of a kilobyte a round would pass it within the run.
constexpr std::int64_t kResidentBoundKiB = 1024;

// Runs the event loop for `ms`: timers fire, replies arrive, deferred deletions happen.
void runFor(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 1000;
    // Only some screens, to tell which one grows.
    std::vector<AppSection> sections;
    for (int i = 2; i < argc; ++i) {
        if (const auto s = sectionFromRawKey(argv[i])) {
            sections.push_back(*s);
        } else {
            std::fprintf(stderr, "no section is called %s\n", argv[i]);
            return 2;
        }
    }
    if (sections.empty()) {
        for (const SectionInfo& s : allSections()) {
            sections.push_back(s.section);
        }
    }
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Tarvik"));
    QApplication::setApplicationName(QStringLiteral("Tarvik"));
    QApplication::setQuitOnLastWindowClosed(false);
    Theme theme(std::make_unique<ColorSchemePortal>());
    theme.start();

    AppModels models(AppModels::defaultOptions());
    MainWindow window(models);
    // As with a tray: closing puts the window away rather than minimising it.
    window.setPolicyWhenClosed([] { return ActivationPolicy::Accessory; });

    const int warmUp = std::min(kWarmUpRounds, rounds);
    std::int64_t residentAtStart = 0;
    int descriptorsAtStart = 0;
    soak::printHeader();
    for (int r = 1; r <= rounds; ++r) {
        window.present();
        for (AppSection s : sections) {
            models.navigator().select(s);
            runFor(kVisitMs);
        }
        window.close();
        runFor(kVisitMs);
        if (r == warmUp || r % 100 == 0 || r == rounds) {
            runFor(kQuietMs);
            soak::printRow(r);
            if (r == warmUp) {
                residentAtStart = soak::residentKiB();
                descriptorsAtStart = soak::openDescriptors();
            }
        }
    }
    const std::int64_t grown = soak::residentKiB() - residentAtStart;
    const int opened = soak::openDescriptors() - descriptorsAtStart;
    // Fewer at the end is no growth: a connection of round 10 was still closing then.
    const bool pass = grown <= kResidentBoundKiB && opened <= 0;
    std::printf("# %d rounds of %zu screens: resident memory %+lld KiB and descriptors %+d from "
                "round %d to the end (bounds: %lld KiB, none more): %s\n",
                rounds, sections.size(), static_cast<long long>(grown), opened, warmUp,
                static_cast<long long>(kResidentBoundKiB), pass ? "PASS" : "FAIL");
    return pass ? 0 : 1;
}
