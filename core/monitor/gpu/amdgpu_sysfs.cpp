// AMD GPUs report their busy share in percent through the amdgpu driver's sysfs attribute.
#include "core/monitor/gpu/gpu_source.h"
#include "core/sys/system_files.h"

#include <algorithm>

namespace tarvik {
namespace {

class AmdGpuSource final : public GpuSource {
public:
    AmdGpuSource(std::filesystem::path root, std::vector<std::filesystem::path> devices)
        : root_(std::move(root)), devices_(std::move(devices)) {}

    GpuReading read(std::int64_t) override {
        GpuReading out;
        for (const auto& device : devices_) {
            // Reading gpu_busy_percent resumes a sleeping card; a laptop's discrete GPU would
            // then never sleep again while Tarvik shows readings.
            if (isRuntimeSuspended(root_, device)) {
                out.asleep = true;
                continue;
            }
            if (const auto busy = platform::readInteger(root_, device / "gpu_busy_percent")) {
                const double load = std::clamp(static_cast<double>(*busy) / 100.0, 0.0, 1.0);
                out.load = std::max(out.load.value_or(0.0), load);
            }
        }
        return out;
    }

private:
    std::filesystem::path root_;
    std::vector<std::filesystem::path> devices_;
};

} // namespace

std::unique_ptr<GpuSource> makeAmdGpuSource(const std::filesystem::path& root) {
    std::vector<std::filesystem::path> devices;
    for (const auto& card : drmCards(root)) {
        const std::filesystem::path device =
            std::filesystem::path("sys/class/drm") / card / "device";
        std::error_code ec;
        if (std::filesystem::exists(root / device / "gpu_busy_percent", ec)) {
            devices.push_back(device);
        }
    }
    if (devices.empty()) {
        return nullptr;
    }
    return std::make_unique<AmdGpuSource>(root, std::move(devices));
}

} // namespace tarvik
