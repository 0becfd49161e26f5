#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace tarvik {

struct GpuReading {
    std::optional<double> load; // 0…1, the busiest GPU this source sees
    bool asleep = false;        // a GPU was runtime-suspended and was left alone
};

// One way of reading GPU load. Sources are probed once at start; a source whose hardware or
// library is absent is not kept.
class GpuSource {
public:
    virtual ~GpuSource() = default;
    virtual GpuReading read(std::int64_t nowNs) = 0;
};

std::unique_ptr<GpuSource> makeAmdGpuSource(const std::filesystem::path& root);
std::unique_ptr<GpuSource> makeIntelGpuSource(const std::filesystem::path& root);
std::unique_ptr<GpuSource> makeNvidiaGpuSource(const std::filesystem::path& root);

// Every source this machine has; the largest load wins, and no source reporting gives no
// figure.
class GpuMonitor {
public:
    explicit GpuMonitor(const std::filesystem::path& root);
    explicit GpuMonitor(std::vector<std::unique_ptr<GpuSource>> sources);
    GpuReading read(std::int64_t nowNs);
    bool hasSources() const { return !sources_.empty(); }

private:
    std::vector<std::unique_ptr<GpuSource>> sources_;
};

// A DRM card's PCI device is runtime-suspended; reading its counters would wake it.
bool isRuntimeSuspended(const std::filesystem::path& root, const std::filesystem::path& device);
// The DRM cards (card0, card1, …, not their connectors), sorted.
std::vector<std::string> drmCards(const std::filesystem::path& root);

} // namespace tarvik
