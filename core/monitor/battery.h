#pragma once

#include <QString>
#include <filesystem>
#include <optional>

namespace tarvik {

enum class PowerSource { Battery, AcPower };

struct BatteryInfo {
    double charge = 0; // 0…1
    bool isCharging = false;
    PowerSource source = PowerSource::Battery;
    std::optional<int> minutesRemaining;
    std::optional<int> cycleCount;
    std::optional<double> health;      // 0…1
    std::optional<double> temperature; // °C
    QString statusText() const;
    // The status and, when known, the time left or to full: "Charging · 1 hour to full".
    QString statusLine() const;
};

// The machine's own batteries under /sys/class/power_supply (a mouse's or a phone's battery,
// scope "Device", is not the machine's); several batteries are combined. Empty when the
// machine has none.
std::optional<BatteryInfo> readBattery(const std::filesystem::path& root);

} // namespace tarvik
