// What brew prints while it works: its output as it arrives in pieces, each line styled for the
// log and followed for progress, the failure explained from the whole log; and the plain answers of
// "search" and
// "--version".
#include "core/homebrew/brew_environment.h"
#include "core/homebrew/brew_log.h"
#include "core/homebrew/brew_updates.h"
#include "core/homebrew/line_collector.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input = fuzz::bytes(data, size);
    QStringList log;
    std::uint64_t id = 0;
    BrewProgressTracker progress;
    LineCollector lines([&](const QString& line) {
        log.append(line);
        BrewLogParser::parse(line, ++id);
        progress.feed(line);
    });
    // Pieces of uneven sizes, so that lines and characters are cut anywhere.
    for (qsizetype at = 0, piece = 1; at < input.size(); at += piece, piece = piece % 13 + 3) {
        lines.append(input.mid(at, piece));
    }
    lines.flush();
    BrewFailure::explain(QStringLiteral("wget"), QStringLiteral("Wget"), log);
    const QString text = QString::fromUtf8(input);
    parseBrewSearch(text);
    parseBrewVersion(text);
    return 0;
}
