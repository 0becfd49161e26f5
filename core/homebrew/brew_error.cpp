#include "core/homebrew/brew_error.h"

#include "core/text/counts.h"

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
        return QStringLiteral("brew gave no answer for %1 and was stopped.")
            .arg(code % 60 == 0 && code >= 120 ? countOf(code / 60, u"minute", u"minutes")
                                               : countOf(code, u"second", u"seconds"));
    }
    return {};
}

} // namespace tarvik
