// The memory reading is parsed on every sample of the live readings, so it must stay far
// below the cost of reading the file itself.
#include "core/monitor/meminfo.h"
#include "core/sys/system_files.h"

#include <benchmark/benchmark.h>

namespace {

const std::string& capturedMeminfo() {
    static const std::string text =
        tarvik::platform::readSmallFile(TARVIK_FIXTURES "/linux/debian12-vm", "proc/meminfo")
            .value_or(std::string());
    return text;
}

void parseCapturedMeminfo(benchmark::State& state) {
    const std::string& text = capturedMeminfo();
    for (auto _ : state) {
        benchmark::DoNotOptimize(tarvik::platform::parseMeminfo(text));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(parseCapturedMeminfo);

void readAndParseLiveMeminfo(benchmark::State& state) {
    for (auto _ : state) {
        auto text = tarvik::platform::readSmallFile("/", "proc/meminfo");
        benchmark::DoNotOptimize(tarvik::platform::parseMeminfo(text.value_or(std::string())));
    }
}
BENCHMARK(readAndParseLiveMeminfo);

} // namespace
