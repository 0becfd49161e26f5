// The CPU time of one sample of this machine: every reading the tray and the monitor screen
// show (CPU, memory, pressure, network, disk, GPU, load, thermal zones, battery).
#include "core/monitor/system_sampler.h"

#include <benchmark/benchmark.h>

namespace {

void sampleThisMachine(benchmark::State& state) {
    tarvik::SystemSampler sampler;
    for (auto _ : state) {
        benchmark::DoNotOptimize(sampler.sample());
    }
}
BENCHMARK(sampleThisMachine)->MeasureProcessCPUTime()->UseRealTime();

} // namespace
