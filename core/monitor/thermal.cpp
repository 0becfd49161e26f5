#include "core/monitor/thermal.h"

#include "core/sys/system_files.h"

#include <algorithm>
#include <system_error>

namespace tarvik {

QString title(ThermalLevel level) {
    switch (level) {
    case ThermalLevel::Nominal:
        return QStringLiteral("Normal");
    case ThermalLevel::Fair:
        return QStringLiteral("Warm");
    case ThermalLevel::Serious:
        return QStringLiteral("Hot");
    case ThermalLevel::Critical:
        return QStringLiteral("Critical");
    }
    return {};
}

std::optional<ThermalLevel> readThermalLevel(const std::filesystem::path& root) {
    using platform::readAttribute;
    using platform::readInteger;
    // Within this many millidegrees of throttling the machine counts as warm.
    constexpr std::int64_t kFairMargin = 10'000;
    std::optional<ThermalLevel> worst;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(root / "sys/class/thermal", ec)) {
        const std::string zone = entry.path().filename().string();
        if (!zone.starts_with("thermal_zone")) {
            continue;
        }
        const std::string dir = "sys/class/thermal/" + zone;
        const auto temp = readInteger(root, dir + "/temp");
        if (!temp || *temp <= 0) {
            continue; // disabled zones read 0 or negative, or fail
        }
        std::optional<std::int64_t> passive;
        std::optional<std::int64_t> critical;
        for (int i = 0; i < 32; ++i) {
            const auto type =
                readAttribute(root, dir + "/trip_point_" + std::to_string(i) + "_type");
            if (!type) {
                break;
            }
            const auto at = readInteger(root, dir + "/trip_point_" + std::to_string(i) + "_temp");
            if (!at || *at <= 0) {
                continue;
            }
            if (*type == "passive") {
                passive = std::min(passive.value_or(*at), *at);
            } else if (*type == "critical" || *type == "hot") {
                critical = std::min(critical.value_or(*at), *at);
            }
        }
        if (!passive && !critical) {
            continue;
        }
        ThermalLevel level = ThermalLevel::Nominal;
        const std::int64_t throttle = passive.value_or(critical.value_or(0) - kFairMargin);
        if (critical && *temp >= *critical) {
            level = ThermalLevel::Critical;
        } else if (*temp >= throttle) {
            level = ThermalLevel::Serious;
        } else if (*temp >= throttle - kFairMargin) {
            level = ThermalLevel::Fair;
        }
        worst = std::max(worst.value_or(ThermalLevel::Nominal), level);
    }
    return worst;
}

} // namespace tarvik
