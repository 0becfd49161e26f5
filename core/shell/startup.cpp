#include "core/shell/startup.h"

namespace tarvik {

bool decideStartInBackground(const StartupInputs& in) {
    if (!in.isLoginLaunch && in.opensWindowAtLaunch) {
        return false;
    }
    return in.showMenuBarExtra;
}

ActivationPolicy dockIconPolicy(bool hideDockIcon, bool showMenuBarExtra, bool mainWindowOpen) {
    if (!hideDockIcon || !showMenuBarExtra || mainWindowOpen) {
        return ActivationPolicy::Regular;
    }
    return ActivationPolicy::Accessory;
}

std::optional<ActivationPolicy> policyChange(ActivationPolicy current, ActivationPolicy wanted) {
    if (current == wanted) {
        return std::nullopt;
    }
    return wanted;
}

StartupPlan planStartup(const StartupInputs& in) {
    return {decideStartInBackground(in),
            dockIconPolicy(in.hideDockIcon, in.showMenuBarExtra, /*mainWindowOpen=*/false)};
}

} // namespace tarvik
