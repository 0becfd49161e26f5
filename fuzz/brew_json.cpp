// brew's JSON: the installed packages, the outdated ones and the services, merged into the list
// the Homebrew screen shows. Every input is read as each of the three answers.
#include "core/homebrew/brew_package.h"
#include "core/homebrew/brew_parsing.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

namespace {

template <typename Parse>
auto readOrNothing(Parse parse, const QByteArray& input) -> decltype(parse(input)) {
    try {
        return parse(input);
    } catch (const BrewParseError&) {
        return {};
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input = fuzz::bytes(data, size);
    auto installed = readOrNothing(BrewParsing::parseInstalled, input);
    const auto outdated = readOrNothing(BrewParsing::parseOutdated, input);
    const auto services = readOrNothing(BrewParsing::parseServices, input);
    const BrewSnapshot snapshot = BrewSnapshot::merge(std::move(installed), outdated, services);
    snapshot.totalSize();
    snapshot.formulaeCount();
    snapshot.casksCount();
    snapshot.onRequestCount();
    snapshot.pinned();
    for (const BrewPackage& package : snapshot.outdated()) {
        BrewVersion::display(package.installedVersion);
        BrewVersion::isMajorJump(package.installedVersion, package.latestVersion.value_or(""));
    }
    return 0;
}
