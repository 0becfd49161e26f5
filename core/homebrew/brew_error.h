#pragma once

#include <QString>

namespace tarvik {

// What can go wrong with a brew command, with the sentence the user reads.
struct BrewError {
    enum class Kind { Failed, NotInstalled, Busy, Cancelled, CouldNotRun, TimedOut };
    Kind kind;
    int code = 0; // Failed: brew's exit status; TimedOut: the seconds it stayed silent

    QString message() const;
    bool operator==(const BrewError& o) const {
        return kind == o.kind && (kind != Kind::Failed || code == o.code);
    }
};

} // namespace tarvik
