#include "core/awake/escape_unlock_tracker.h"

#include <gtest/gtest.h>

using tarvik::EscapeUnlockTracker;
using Outcome = EscapeUnlockTracker::Outcome;

TEST(EscapeUnlockTracker, FivePressesEachWithinThreeSecondsUnlock) {
    EscapeUnlockTracker t(5, 3.0);
    EXPECT_EQ(t.escapePressed(0), (Outcome{false, 1}));
    EXPECT_EQ(t.escapePressed(1), (Outcome{false, 2}));
    EXPECT_EQ(t.escapePressed(2), (Outcome{false, 3}));
    EXPECT_EQ(t.escapePressed(3), (Outcome{false, 4}));
    EXPECT_EQ(t.escapePressed(6), (Outcome{true, 0}));    // a gap of exactly 3 s still counts
    EXPECT_EQ(t.escapePressed(6.5), (Outcome{false, 1})); // unlocking started afresh
}

TEST(EscapeUnlockTracker, SlowPressesAndOtherKeysStartAgain) {
    EscapeUnlockTracker t(5, 3.0);
    t.escapePressed(0);
    EXPECT_EQ(t.escapePressed(3.5), (Outcome{false, 1}));

    EscapeUnlockTracker keys(5, 3.0);
    EXPECT_EQ(keys.escapePressed(0), (Outcome{false, 1}));
    EXPECT_EQ(keys.escapePressed(0.2), (Outcome{false, 2}));
    keys.otherKeyPressed();
    EXPECT_EQ(keys.count(), 0);
    EXPECT_EQ(keys.escapePressed(100), (Outcome{false, 1})); // no stale last press
}

TEST(EscapeUnlockTracker, AtLeastOnePressIsRequired) {
    EscapeUnlockTracker t(0, 3.0);
    EXPECT_EQ(t.required(), 1);
    EXPECT_EQ(t.escapePressed(0), (Outcome{true, 0}));
}
