// NVIDIA GPUs through NVML, loaded at run time from the driver's libnvidia-ml.so.1 so that
// Tarvik neither builds against nor requires the proprietary driver.
#include "core/monitor/gpu/gpu_source.h"
#include "core/sys/system_files.h"

#include <algorithm>
#include <dlfcn.h>
#include <system_error>

namespace tarvik {
namespace {

// The few NVML entry points used, as the driver's public API declares them.
using NvmlReturn = int;
using NvmlDevice = struct NvmlDeviceOpaque*;
struct NvmlUtilization {
    unsigned int gpu;
    unsigned int memory;
};
using InitFn = NvmlReturn (*)();
using CountFn = NvmlReturn (*)(unsigned int*);
using HandleFn = NvmlReturn (*)(unsigned int, NvmlDevice*);
using UtilizationFn = NvmlReturn (*)(NvmlDevice, NvmlUtilization*);
using ShutdownFn = NvmlReturn (*)();
constexpr NvmlReturn kNvmlSuccess = 0;

template <class Fn> Fn symbol(void* library, const char* name) {
    return reinterpret_cast<Fn>(::dlsym(library, name));
}

class NvidiaGpuSource final : public GpuSource {
public:
    NvidiaGpuSource(std::filesystem::path root, std::vector<std::filesystem::path> devices)
        : root_(std::move(root)), devices_(std::move(devices)) {}

    ~NvidiaGpuSource() override {
        if (initialised_ && shutdown_ != nullptr) {
            shutdown_();
        }
        if (library_ != nullptr) {
            ::dlclose(library_);
        }
    }

    GpuReading read(std::int64_t) override {
        GpuReading out;
        // Every NVML call wakes a runtime-suspended card; leave sleeping cards asleep.
        const bool allAsleep = std::all_of(devices_.begin(), devices_.end(), [this](const auto& d) {
            return isRuntimeSuspended(root_, d);
        });
        if (allAsleep) {
            out.asleep = true;
            return out;
        }
        if (!load()) {
            return out;
        }
        unsigned int count = 0;
        if (count_(&count) != kNvmlSuccess) {
            return out;
        }
        for (unsigned int i = 0; i < count; ++i) {
            NvmlDevice device = nullptr;
            NvmlUtilization use{};
            if (handle_(i, &device) == kNvmlSuccess && utilization_(device, &use) == kNvmlSuccess) {
                const double load = std::clamp(static_cast<double>(use.gpu) / 100.0, 0.0, 1.0);
                out.load = std::max(out.load.value_or(0.0), load);
            }
        }
        return out;
    }

private:
    bool load() {
        if (triedLoading_) {
            return initialised_;
        }
        triedLoading_ = true;
        library_ = ::dlopen("libnvidia-ml.so.1", RTLD_NOW | RTLD_LOCAL);
        if (library_ == nullptr) {
            return false;
        }
        auto init = symbol<InitFn>(library_, "nvmlInit_v2");
        count_ = symbol<CountFn>(library_, "nvmlDeviceGetCount_v2");
        handle_ = symbol<HandleFn>(library_, "nvmlDeviceGetHandleByIndex_v2");
        utilization_ = symbol<UtilizationFn>(library_, "nvmlDeviceGetUtilizationRates");
        shutdown_ = symbol<ShutdownFn>(library_, "nvmlShutdown");
        initialised_ = init != nullptr && count_ != nullptr && handle_ != nullptr &&
                       utilization_ != nullptr && init() == kNvmlSuccess;
        return initialised_;
    }

    std::filesystem::path root_;
    std::vector<std::filesystem::path> devices_;
    void* library_ = nullptr;
    bool triedLoading_ = false;
    bool initialised_ = false;
    CountFn count_ = nullptr;
    HandleFn handle_ = nullptr;
    UtilizationFn utilization_ = nullptr;
    ShutdownFn shutdown_ = nullptr;
};

} // namespace

std::unique_ptr<GpuSource> makeNvidiaGpuSource(const std::filesystem::path& root) {
    // The PCI display controllers of vendor 0x10de; without one, NVML is never loaded.
    std::vector<std::filesystem::path> devices;
    std::error_code ec;
    for (const auto& entry :
         std::filesystem::directory_iterator(root / "sys/bus/pci/devices", ec)) {
        const auto rel = std::filesystem::path("sys/bus/pci/devices") / entry.path().filename();
        const auto vendor = platform::readAttribute(root, rel / "vendor");
        const auto pciClass = platform::readAttribute(root, rel / "class");
        if (vendor == "0x10de" && pciClass && pciClass->starts_with("0x03")) {
            devices.push_back(rel);
        }
    }
    if (devices.empty()) {
        return nullptr;
    }
    return std::make_unique<NvidiaGpuSource>(root, std::move(devices));
}

} // namespace tarvik
