#pragma once

#include <QString>
#include <filesystem>
#include <optional>

namespace tarvik {

enum class ThermalLevel { Nominal, Fair, Serious, Critical };
QString title(ThermalLevel level);

// Each thermal zone's temperature against its own trip points (docs/monitor.md); the hottest
// zone decides. Empty when no zone has a usable temperature and trip point.
std::optional<ThermalLevel> readThermalLevel(const std::filesystem::path& root);

} // namespace tarvik
