#include "core/homebrew/brew_log.h"

#include <QRegularExpression>

namespace tarvik {

namespace BrewLogParser {

QString stripANSI(const QString& text) {
    static const QRegularExpression kControl(QStringLiteral("\x1b\\[[0-9;?]*[ -/]*[@-~]"));
    static const QRegularExpression kOsc(QStringLiteral("\x1b\\][^\x07\x1b]*(?:\x07|\x1b\\\\)"));
    // Any other escape sequence: ESC, its intermediate bytes and its final byte (ESC c, ESC ( B).
    static const QRegularExpression kEscape(QStringLiteral("\x1b[ -/]*[0-~]?"));
    QString out = text;
    out.remove(kControl);
    out.remove(kOsc);
    out.remove(kEscape);
    // Whatever other control characters are left (a lone escape, a bell, a backspace, C1
    // codes) would act on the terminal they are printed to: they go too, tabs aside.
    out.removeIf([](QChar c) {
        const char16_t u = c.unicode();
        return (u < 0x20 && u != u'\t') || (u >= 0x7F && u <= 0x9F);
    });
    return out;
}

BrewLogLine parse(const QString& raw, std::uint64_t id) {
    const bool bold = raw.contains(QStringLiteral("\x1b[1m"));
    const bool red =
        raw.contains(QStringLiteral("\x1b[31m")) || raw.contains(QStringLiteral("\x1b[1;31m"));
    const bool green =
        raw.contains(QStringLiteral("\x1b[32m")) || raw.contains(QStringLiteral("\x1b[1;32m"));
    const bool yellow = raw.contains(QStringLiteral("\x1b[33m")) ||
                        raw.contains(QStringLiteral("\x1b[4;33m")) ||
                        raw.contains(QStringLiteral("\x1b[1;33m"));
    QString text = stripANSI(raw);
    while (text.startsWith(QLatin1Char('\r'))) {
        text.remove(0, 1);
    }
    while (text.endsWith(QLatin1Char('\r'))) {
        text.chop(1);
    }
    BrewLogLine line{id, text, BrewLogLine::Style::Normal, BrewLogLine::Marker::None};
    if (text.startsWith(QLatin1String("Error:")) || red) {
        line.marker = BrewLogLine::Marker::Critical;
    } else if (text.startsWith(QLatin1String("Warning:")) || yellow) {
        line.marker = BrewLogLine::Marker::Watch;
    } else if (green || text.startsWith(QString::fromUcs4(U"\U0001F37A"))) {
        line.marker = BrewLogLine::Marker::Good;
    }
    if (text.startsWith(QLatin1String("==>")) || bold) {
        line.style = BrewLogLine::Style::Heading;
    } else if (text.startsWith(QLatin1String("http")) || text.startsWith(QLatin1Char('#')) ||
               (text.contains(QLatin1Char('%')) && text.startsWith(QLatin1Char(' ')))) {
        line.style = BrewLogLine::Style::Dim;
    }
    return line;
}

} // namespace BrewLogParser

QString BrewProgressTracker::rawValue(Phase phase) {
    switch (phase) {
    case Phase::Fetching:
        return QStringLiteral("Fetching");
    case Phase::Downloading:
        return QStringLiteral("Downloading");
    case Phase::Pouring:
        return QStringLiteral("Pouring");
    case Phase::Installing:
        return QStringLiteral("Installing");
    case Phase::Linking:
        return QStringLiteral("Linking");
    case Phase::Cleaning:
        return QStringLiteral("Cleaning");
    }
    return {};
}

std::optional<BrewProgressTracker::Phase> BrewProgressTracker::phaseFromRaw(const QString& raw) {
    for (auto p : {Phase::Fetching, Phase::Downloading, Phase::Pouring, Phase::Installing,
                   Phase::Linking, Phase::Cleaning}) {
        if (rawValue(p) == raw) {
            return p;
        }
    }
    return std::nullopt;
}

BrewProgressTracker::Update BrewProgressTracker::setPhase(Phase phase) {
    current_.phase = phase;
    current_.percent.reset(); // a new phase starts from nothing
    return current_;
}

std::optional<BrewProgressTracker::Update> BrewProgressTracker::feed(const QString& line) {
    if (!line.startsWith(QLatin1String("==> "))) {
        if (line.contains(QLatin1String("Cleaning up"))) {
            current_.package.reset();
            return setPhase(Phase::Cleaning);
        }
        static const QRegularExpression kPercent(QStringLiteral("(\\d{1,3}(?:\\.\\d)?)%"));
        const auto m = kPercent.match(line);
        if (!m.hasMatch()) {
            return std::nullopt;
        }
        const double value = m.captured(1).toDouble();
        if (value > 100) {
            return std::nullopt;
        }
        current_.percent = value / 100.0;
        return current_;
    }
    const QString rest = line.mid(4);
    for (const char* start : {"Upgrading ", "Installing "}) {
        if (rest.startsWith(QLatin1String(start)) &&
            !rest.startsWith(QLatin1String("Installing Cask")) &&
            !rest.startsWith(QLatin1String("Installing cask"))) {
            const QStringList names = rest.mid(static_cast<qsizetype>(qstrlen(start)))
                                          .split(QLatin1Char(' '), Qt::SkipEmptyParts);
            packages_ = QSet<QString>(names.begin(), names.end());
            return std::nullopt;
        }
    }
    if (rest.startsWith(QLatin1String("Fetching "))) {
        const QString word = rest.mid(9).section(QLatin1Char(' '), 0, 0);
        if (packages_.contains(word)) {
            current_.package = word;
        }
        return setPhase(Phase::Fetching);
    }
    if (rest.startsWith(QLatin1String("Downloading "))) {
        return setPhase(Phase::Downloading);
    }
    if (rest.startsWith(QLatin1String("Pouring "))) {
        return setPhase(Phase::Pouring);
    }
    if (rest.startsWith(QLatin1String("Installing Cask")) ||
        rest.startsWith(QLatin1String("Installing cask")) ||
        rest.startsWith(QLatin1String("Moving App"))) {
        return setPhase(Phase::Installing);
    }
    if (rest.startsWith(QLatin1String("Linking "))) {
        return setPhase(Phase::Linking);
    }
    return std::nullopt;
}

BrewFailure BrewFailure::explain(const QString&, const QString& displayName,
                                 const QStringList& log) {
    const QString all = log.join(QLatin1Char('\n')).toLower();
    auto any = [&all](std::initializer_list<const char*> needles) {
        for (const char* n : needles) {
            if (all.contains(QLatin1String(n))) {
                return true;
            }
        }
        return false;
    };
    if (any({"it seems there is already an app at", "is still running", "app is running",
             "couldn't be quit"})) {
        return {displayName + QStringLiteral(
                                  " is open, and Homebrew can't replace an app while it's running"),
                QStringLiteral("Quit ") + displayName + QStringLiteral(" and retry")};
    }
    if (any({"sha256 mismatch", "checksum"})) {
        return {
            QStringLiteral("The download didn't match its checksum. It may have been interrupted"),
            QStringLiteral("Retry")};
    }
    if (any({"could not resolve host", "failed to connect", "curl: (6)", "curl: (7)",
             "download failed"})) {
        return {QStringLiteral("Couldn't download ") + displayName +
                    QStringLiteral(". Check your connection"),
                QStringLiteral("Retry")};
    }
    for (const QString& line : log) {
        if (line.startsWith(QLatin1String("Error:"))) {
            return {QStringLiteral("Homebrew stopped with an error: ") + line.mid(6).trimmed(),
                    QStringLiteral("Retry")};
        }
    }
    return {QStringLiteral("Homebrew stopped with an error"), QStringLiteral("Retry")};
}

} // namespace tarvik
