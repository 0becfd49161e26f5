// Intel's i915 driver has no busy percentage; it exposes how long the graphics tile has been in
// its RC6 sleep state. Busy = 1 − (time asleep ÷ time elapsed) between two samples.
#include "core/monitor/gpu/gpu_source.h"
#include "core/sys/system_files.h"

#include <algorithm>

namespace tarvik {
namespace {

class IntelGpuSource final : public GpuSource {
public:
    IntelGpuSource(std::filesystem::path root, std::vector<std::filesystem::path> files)
        : root_(std::move(root)), files_(std::move(files)), last_(files_.size()) {}

    GpuReading read(std::int64_t nowNs) override {
        GpuReading out;
        for (std::size_t i = 0; i < files_.size(); ++i) {
            const auto rc6 = platform::readInteger(root_, files_[i]);
            if (!rc6) {
                last_[i].reset();
                continue;
            }
            if (last_[i] && nowNs > last_[i]->atNs && *rc6 >= last_[i]->rc6Ms) {
                const double elapsedMs = static_cast<double>(nowNs - last_[i]->atNs) / 1e6;
                const double asleepMs = static_cast<double>(*rc6 - last_[i]->rc6Ms);
                const double load = std::clamp(1.0 - asleepMs / elapsedMs, 0.0, 1.0);
                out.load = std::max(out.load.value_or(0.0), load);
            }
            last_[i] = Sample{*rc6, nowNs};
        }
        return out;
    }

private:
    struct Sample {
        std::int64_t rc6Ms;
        std::int64_t atNs;
    };
    std::filesystem::path root_;
    std::vector<std::filesystem::path> files_;
    std::vector<std::optional<Sample>> last_;
};

} // namespace

std::unique_ptr<GpuSource> makeIntelGpuSource(const std::filesystem::path& root) {
    std::vector<std::filesystem::path> files;
    for (const auto& card : drmCards(root)) {
        const std::filesystem::path dir = std::filesystem::path("sys/class/drm") / card;
        // Newer kernels put it per graphics tile, older ones under power/.
        for (const char* rel : {"gt/gt0/rc6_residency_ms", "power/rc6_residency_ms"}) {
            if (platform::readInteger(root, dir / rel)) {
                files.push_back(dir / rel);
                break;
            }
        }
    }
    if (files.empty()) {
        return nullptr;
    }
    return std::make_unique<IntelGpuSource>(root, std::move(files));
}

} // namespace tarvik
