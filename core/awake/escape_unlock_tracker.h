#pragma once

#include <optional>

namespace tarvik {

// Counts Escape presses that unlock the keyboard lock: `required` presses, each at most
// `window` seconds after the one before. Times are seconds of system uptime.
class EscapeUnlockTracker {
public:
    struct Outcome {
        bool unlock = false;
        int count = 0; // presses counted so far when not unlocking
        bool operator==(const Outcome&) const = default;
    };

    EscapeUnlockTracker(int required, double window);

    Outcome escapePressed(double t);
    void otherKeyPressed();

    int required() const { return required_; }
    double window() const { return window_; }
    int count() const { return count_; }

private:
    int required_;
    double window_;
    int count_ = 0;
    std::optional<double> lastPress_;
};

inline constexpr int kEscapesToUnlock = 5;
inline constexpr double kEscapeWindowSeconds = 3.0;

} // namespace tarvik
