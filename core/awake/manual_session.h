#pragma once

#include <QDateTime>
#include <QString>
#include <array>
#include <optional>

namespace tarvik {

// A keep-awake session the user started by hand: until an instant, or until turned off.
struct ManualSession {
    enum class Duration {
        QuarterHour = 15,
        OneHour = 60,
        TwoHours = 120,
        FourHours = 240,
        EightHours = 480
    };

    std::optional<QDateTime> until; // absent: until the user turns it off

    static ManualSession indefinite() { return {}; }
    static ManualSession endingAt(const QDateTime& end) { return {end}; }
    static ManualSession starting(const QDateTime& at, Duration duration);

    bool isIndefinite() const { return !until.has_value(); }
    bool hasEnded(const QDateTime& now) const { return until && *until <= now; }

    bool operator==(const ManualSession&) const = default;
};

inline constexpr std::array<ManualSession::Duration, 5> kManualDurations = {
    ManualSession::Duration::QuarterHour, ManualSession::Duration::OneHour,
    ManualSession::Duration::TwoHours, ManualSession::Duration::FourHours,
    ManualSession::Duration::EightHours};

int minutes(ManualSession::Duration duration);
qint64 seconds(ManualSession::Duration duration);
QString label(ManualSession::Duration duration); // "15 min", "1 h", …
QString indefiniteText();                        // "Until you turn it off"

} // namespace tarvik
