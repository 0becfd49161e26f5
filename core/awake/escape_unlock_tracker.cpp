#include "core/awake/escape_unlock_tracker.h"

#include <algorithm>

namespace tarvik {

EscapeUnlockTracker::EscapeUnlockTracker(int required, double window)
    : required_(std::max(required, 1)), window_(window) {}

EscapeUnlockTracker::Outcome EscapeUnlockTracker::escapePressed(double t) {
    if (lastPress_ && t - *lastPress_ > window_) {
        count_ = 0; // a gap of exactly `window` still counts as quick
    }
    lastPress_ = t;
    ++count_;
    if (count_ < required_) {
        return {false, count_};
    }
    otherKeyPressed();
    return {true, 0};
}

void EscapeUnlockTracker::otherKeyPressed() {
    count_ = 0;
    lastPress_.reset();
}

} // namespace tarvik
