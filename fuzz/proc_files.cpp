// The text files of /proc (and /etc/os-release) that the readings come from. Every parser gets
// every input; those that compare two samples get the input's two halves as before and after.
#include "core/monitor/cpu.h"
#include "core/monitor/disk.h"
#include "core/monitor/load_average.h"
#include "core/monitor/machine_summary.h"
#include "core/monitor/meminfo.h"
#include "core/monitor/memory.h"
#include "core/monitor/network.h"
#include "core/monitor/process_sample.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::text(data, size);
    const std::string_view before = text.substr(0, size / 2);
    const std::string_view after = text.substr(size / 2);

    cpuLoads(parseProcStat(before).cores, parseProcStat(after).cores);
    countCpuList(text);
    memoryFromMeminfo(platform::parseMeminfo(text), 0);
    parseMemoryPressure(text);
    networkDelta(parseProcNetDev(before), parseProcNetDev(after));
    parseDiskstats(text, isCountedDiskName);
    parseLoadAverage(text);
    parseProcessStat(text);
    parseUptime(text);
    parseOsReleaseName(text);
    return 0;
}
