#pragma once

// The window's models for a test: settings, autostart folder and readings in a temporary home,
// machine readings from `root` (a captured tree, or "/" for the live system).
#include "app/shell/app_models.h"
#include "tests/support/temp_home.h"

#include <filesystem>

namespace tarvik::test {

inline AppModels::Options optionsIn(const TempHome& home, const std::filesystem::path& root = "/") {
    SamplerOptions sampler;
    sampler.root = root;
    return {home.config() + "/Tarvik/Tarvik.conf",
            home.config() + "/autostart",
            "/usr/bin/tarvik",
            {root, home.path()},
            sampler,
            std::nullopt,
            QString(),
            nullptr,
            std::nullopt,
            // No input devices: a test never takes the machine's keyboard.
            home.path() + "/no-input-devices"};
}

} // namespace tarvik::test
