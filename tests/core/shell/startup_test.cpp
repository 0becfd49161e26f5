#include "core/shell/startup.h"

#include <gtest/gtest.h>

using namespace tarvik;

TEST(Startup, WindowOrSilentStartFollowsLaunchKindAndPreferences) {
    struct Row {
        bool login, opensWindow, showTray, background;
    };
    const Row rows[] = {
        {false, true, true, false}, // a normal launch opens the window
        {false, true, false, false},
        {false, false, true, true},   // "don't open the window" with a tray: silent
        {false, false, false, false}, // …but never silent without the tray item
        {true, true, true, true},     // a login launch with the tray starts silently
        {true, false, true, true},
        {true, true, false, false}, // a login launch without the tray opens the window
        {true, false, false, false},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(decideStartInBackground({r.login, r.opensWindow, r.showTray, false}),
                  r.background)
            << "login=" << r.login << " opensWindow=" << r.opensWindow << " tray=" << r.showTray;
    }
}

TEST(Startup, DockIconHidesOnlyWithTheTrayItemAndNoOpenWindow) {
    using P = ActivationPolicy;
    EXPECT_EQ(dockIconPolicy(false, true, false), P::Regular);
    EXPECT_EQ(dockIconPolicy(false, false, false), P::Regular);
    EXPECT_EQ(dockIconPolicy(true, true, false), P::Accessory);
    EXPECT_EQ(dockIconPolicy(true, true, true), P::Regular);
    // Without the tray item, hiding would leave the program unreachable.
    EXPECT_EQ(dockIconPolicy(true, false, false), P::Regular);
    EXPECT_EQ(dockIconPolicy(true, false, true), P::Regular);

    EXPECT_EQ(policyChange(P::Regular, P::Regular), std::nullopt);
    EXPECT_EQ(policyChange(P::Regular, P::Accessory), P::Accessory);
    EXPECT_EQ(policyChange(P::Accessory, P::Regular), P::Regular);

    const auto silent = planStartup({true, true, true, true});
    EXPECT_TRUE(silent.startInBackground);
    EXPECT_EQ(silent.initialPolicy, P::Accessory);
    const auto windowed = planStartup({false, true, false, true});
    EXPECT_FALSE(windowed.startInBackground);
    EXPECT_EQ(windowed.initialPolicy, P::Regular);
}
