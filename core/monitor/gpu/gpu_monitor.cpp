#include "core/monitor/gpu/gpu_source.h"
#include "core/sys/system_files.h"

#include <algorithm>
#include <cctype>
#include <system_error>

namespace tarvik {

bool isRuntimeSuspended(const std::filesystem::path& root, const std::filesystem::path& device) {
    return platform::readAttribute(root, device / "power/runtime_status").value_or("") ==
           "suspended";
}

std::vector<std::string> drmCards(const std::filesystem::path& root) {
    std::vector<std::string> cards;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(root / "sys/class/drm", ec)) {
        const std::string name = entry.path().filename().string();
        if (name.size() > 4 && name.starts_with("card") &&
            std::all_of(name.begin() + 4, name.end(),
                        [](char c) { return std::isdigit(static_cast<unsigned char>(c)); })) {
            cards.push_back(name);
        }
    }
    std::sort(cards.begin(), cards.end());
    return cards;
}

GpuMonitor::GpuMonitor(const std::filesystem::path& root) {
    for (auto make : {makeAmdGpuSource, makeIntelGpuSource, makeNvidiaGpuSource}) {
        if (auto source = make(root)) {
            sources_.push_back(std::move(source));
        }
    }
}

GpuMonitor::GpuMonitor(std::vector<std::unique_ptr<GpuSource>> sources)
    : sources_(std::move(sources)) {}

GpuReading GpuMonitor::read(std::int64_t nowNs) {
    GpuReading out;
    for (auto& source : sources_) {
        const GpuReading r = source->read(nowNs);
        if (r.load) {
            out.load = std::max(out.load.value_or(0.0), *r.load);
        }
        out.asleep = out.asleep || r.asleep;
    }
    if (out.load) {
        out.asleep = false; // a working GPU is the figure to show
    }
    return out;
}

} // namespace tarvik
