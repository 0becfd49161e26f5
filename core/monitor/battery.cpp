#include "core/monitor/battery.h"

#include "core/sys/system_files.h"
#include "core/text/metric_format.h"

#include <algorithm>
#include <cmath>
#include <system_error>

namespace tarvik {
namespace {

using platform::readAttribute;
using platform::readInteger;

struct Supply {
    std::optional<std::int64_t> now, full, design,
        rate; // energy µWh and power µW, or charge µAh and current µA
    std::optional<std::int64_t> capacity; // percent
    std::optional<std::int64_t> cycles, temperatureTenths, timeToEmpty, timeToFull;
    std::string status;
};

std::optional<std::int64_t> positive(std::optional<std::int64_t> v) {
    return v && *v >= 1 ? v : std::nullopt;
}

Supply readSupply(const std::filesystem::path& root, const std::string& dir) {
    Supply s;
    const bool energy = readInteger(root, dir + "/energy_full").has_value();
    const std::string unit = energy ? "energy" : "charge";
    s.now = readInteger(root, dir + "/" + unit + "_now");
    s.full = readInteger(root, dir + "/" + unit + "_full");
    s.design = readInteger(root, dir + "/" + unit + "_full_design");
    s.rate = readInteger(root, dir + (energy ? "/power_now" : "/current_now"));
    if (s.rate) {
        s.rate = std::llabs(*s.rate); // some firmware reports discharge as negative
    }
    s.capacity = readInteger(root, dir + "/capacity");
    s.cycles = readInteger(root, dir + "/cycle_count");
    s.temperatureTenths = readInteger(root, dir + "/temp");
    s.timeToEmpty = readInteger(root, dir + "/time_to_empty_now");
    s.timeToFull = readInteger(root, dir + "/time_to_full_now");
    s.status = readAttribute(root, dir + "/status").value_or("");
    return s;
}

} // namespace

QString BatteryInfo::statusText() const {
    if (isCharging) {
        return QStringLiteral("Charging");
    }
    if (source == PowerSource::Battery) {
        return QStringLiteral("On battery");
    }
    return charge >= 0.99 ? QStringLiteral("Charged") : QStringLiteral("On power adapter");
}

QString BatteryInfo::statusLine() const {
    if (!minutesRemaining) {
        return statusText();
    }
    return statusText() + QStringLiteral(" · ") + MetricFormat::duration(*minutesRemaining * 60.0) +
           (isCharging ? QStringLiteral(" to full") : QStringLiteral(" left"));
}

std::optional<BatteryInfo> readBattery(const std::filesystem::path& root) {
    std::error_code ec;
    std::vector<std::string> names;
    for (const auto& entry :
         std::filesystem::directory_iterator(root / "sys/class/power_supply", ec)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());

    std::vector<Supply> batteries;
    std::optional<bool> mainsOnline;
    for (const auto& name : names) {
        const std::string dir = "sys/class/power_supply/" + name;
        const auto type = readAttribute(root, dir + "/type").value_or("");
        if (type == "Mains" || type == "USB") {
            if (const auto online = readInteger(root, dir + "/online")) {
                mainsOnline = mainsOnline.value_or(false) || *online == 1;
            }
            continue;
        }
        if (type != "Battery" || readAttribute(root, dir + "/scope").value_or("") == "Device" ||
            readInteger(root, dir + "/present").value_or(1) == 0) {
            continue;
        }
        Supply s = readSupply(root, dir);
        if (positive(s.full) || s.capacity) {
            batteries.push_back(std::move(s));
        }
    }
    if (batteries.empty()) {
        return std::nullopt;
    }

    // Two batteries (some ThinkPads) act as one: add their energies.
    Supply total = batteries.front();
    for (std::size_t i = 1; i < batteries.size(); ++i) {
        const Supply& b = batteries[i];
        auto add = [](std::optional<std::int64_t>& into, const std::optional<std::int64_t>& v) {
            into = into && v ? std::optional(*into + *v) : std::nullopt;
        };
        add(total.now, b.now);
        add(total.full, b.full);
        add(total.design, b.design);
        total.rate = total.rate.value_or(0) + b.rate.value_or(0);
        if (b.status == "Charging" || b.status == "Discharging") {
            total.status = b.status;
        }
        total.capacity.reset();
    }

    BatteryInfo info;
    if (positive(total.full) && total.now) {
        info.charge = static_cast<double>(*total.now) / static_cast<double>(*total.full);
    } else if (total.capacity) {
        info.charge = static_cast<double>(*total.capacity) / 100.0;
    }
    info.charge = std::clamp(info.charge, 0.0, 1.0);
    info.isCharging = total.status == "Charging";
    const bool discharging = total.status == "Discharging";
    info.source = mainsOnline ? (*mainsOnline ? PowerSource::AcPower : PowerSource::Battery)
                              : (discharging ? PowerSource::Battery : PowerSource::AcPower);

    std::optional<double> minutes;
    if (info.isCharging) {
        if (total.timeToFull) {
            minutes = static_cast<double>(*total.timeToFull) / 60.0;
        } else if (positive(total.rate) && total.now && total.full) {
            minutes = static_cast<double>(*total.full - *total.now) /
                      static_cast<double>(*total.rate) * 60.0;
        }
    } else if (discharging) {
        if (total.timeToEmpty) {
            minutes = static_cast<double>(*total.timeToEmpty) / 60.0;
        } else if (positive(total.rate) && total.now) {
            minutes = static_cast<double>(*total.now) / static_cast<double>(*total.rate) * 60.0;
        }
    }
    // Below one minute is the firmware still estimating, not a real figure.
    if (minutes && *minutes >= 1.0 && *minutes < 100.0 * 60.0) {
        info.minutesRemaining = static_cast<int>(*minutes);
    }
    // Many batteries report 0 cycles because they do not count them at all.
    if (total.cycles && *total.cycles > 0) {
        info.cycleCount = static_cast<int>(*total.cycles);
    }
    if (positive(total.full) && positive(total.design)) {
        info.health =
            std::min(1.0, static_cast<double>(*total.full) / static_cast<double>(*total.design));
    }
    if (total.temperatureTenths) {
        info.temperature = static_cast<double>(*total.temperatureTenths) / 10.0;
    }
    return info;
}

} // namespace tarvik
