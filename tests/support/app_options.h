#pragma once

// The window's models for a test: settings, autostart folder and readings in a temporary home,
// machine readings from `root` (a captured tree, or "/" for the live system).
#include "app/shell/app_models.h"
#include "tests/support/temp_home.h"

#include <QDBusConnection>
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

// The same, with keeping awake asked of a bus where nothing answers: it is asked for and can't be
// given.
inline AppModels::Options withoutLogind(const TempHome& home) {
    auto o = optionsIn(home);
    o.keepAwakeBuses = KeepAwakeBuses{
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent"), "nobus"),
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent"), "nobus")};
    return o;
}

} // namespace tarvik::test
