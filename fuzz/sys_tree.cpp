// A whole /proc and /sys as the readings see them: the input unpacked into a root directory,
// then sampled twice (rates need two samples) with the processes, the GPUs and the battery,
// and the machine summarised.
#include "core/monitor/machine_summary.h"
#include "core/monitor/process_sample.h"
#include "core/monitor/system_sampler.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::InputTree tree(data, size);
    std::int64_t ns = 1'000'000'000;
    SamplerOptions options;
    options.root = tree.root();
    options.clocks = [&ns] {
        ns += 1'000'000'000;
        return SamplerClocks{ns, ns};
    };
    SystemSampler sampler(options);
    sampler.sample(true);
    sampler.sample(true);
    readProcesses({.root = tree.root(), .clockTicks = 100, .pageSize = 4096});
    describe(readMachineSummary({.root = tree.root(), .homePath = QString()}));
    return 0;
}
