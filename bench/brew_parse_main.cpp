// Parses and merges a recorded inventory once, as `tarvik brew list` does after brew answers;
// run by bench/brew_parse_vs_jq.sh beside jq reading the same files.
#include "core/homebrew/brew_parsing.h"

#include <QFile>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: tarvik_bench_brew_parse INSTALLED.json OUTDATED.json\n");
        return 2;
    }
    QFile installed(QString::fromLocal8Bit(argv[1]));
    QFile outdated(QString::fromLocal8Bit(argv[2]));
    if (!installed.open(QIODevice::ReadOnly) || !outdated.open(QIODevice::ReadOnly)) {
        return 1;
    }
    const auto snapshot =
        tarvik::BrewSnapshot::merge(tarvik::BrewParsing::parseInstalled(installed.readAll()),
                                    tarvik::BrewParsing::parseOutdated(outdated.readAll()), {});
    std::printf("%zu packages, %zu outdated\n", snapshot.packages.size(),
                snapshot.outdated().size());
    return 0;
}
