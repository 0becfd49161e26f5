#pragma once

#include <optional>

namespace tarvik {

// Whether the program has a taskbar/dock entry. "Accessory" means none while no main window
// is open; the tray item stays either way.
enum class ActivationPolicy { Regular, Accessory };

struct StartupInputs {
    bool isLoginLaunch = false;
    bool opensWindowAtLaunch = true;
    bool showMenuBarExtra = true;
    bool hideDockIcon = false;
};

struct StartupPlan {
    bool startInBackground = false;
    ActivationPolicy initialPolicy = ActivationPolicy::Regular;
};

// A normal launch with "opensWindowAtLaunch" opens the window; otherwise the program starts
// silently exactly when the tray item is there to reach it.
bool decideStartInBackground(const StartupInputs& in);

// Hiding the entry is allowed only while the tray item is shown, so the program can never
// become unreachable. `mainWindowOpen` excludes a window that is just closing.
ActivationPolicy dockIconPolicy(bool hideDockIcon, bool showMenuBarExtra, bool mainWindowOpen);

// The policy to switch to, or nothing when it already is the current one.
std::optional<ActivationPolicy> policyChange(ActivationPolicy current, ActivationPolicy wanted);

// The decisions of the start-up sequence: where to start, and the policy applied before any
// window is open.
StartupPlan planStartup(const StartupInputs& in);

} // namespace tarvik
