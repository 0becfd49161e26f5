#include "core/homebrew/brew_error.h"

namespace tarvik {

QString BrewError::message() const {
    switch (kind) {
    case Kind::Failed:
        return QStringLiteral("brew stopped with exit status %1.").arg(code);
    case Kind::NotInstalled:
        return QStringLiteral("Homebrew isn't installed");
    case Kind::Busy:
        return QStringLiteral("Homebrew is busy with another command.");
    case Kind::Cancelled:
        return QStringLiteral("Cancelled.");
    case Kind::CouldNotRun:
        return QStringLiteral("Couldn't run brew.");
    case Kind::TimedOut:
        return code % 60 == 0 && code >= 120
                   ? QStringLiteral("brew gave no answer for %1 minutes and was stopped.")
                         .arg(code / 60)
               : code == 1 ? QStringLiteral("brew gave no answer for 1 second and was stopped.")
                           : QStringLiteral("brew gave no answer for %1 seconds and was stopped.")
                                 .arg(code);
    }
    return {};
}

} // namespace tarvik
