#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>

namespace tarvik {

// One line of brew's output for the live log: escape codes removed, styled and marked.
struct BrewLogLine {
    enum class Style { Heading, Normal, Dim };
    enum class Marker { None, Good, Watch, Critical };
    std::uint64_t id = 0;
    QString text;
    Style style = Style::Normal;
    Marker marker = Marker::None;
};

namespace BrewLogParser {
// One line of output as plain text: colour and title sequences, and every other control
// character but the tab, removed.
QString stripANSI(const QString& text);
BrewLogLine parse(const QString& rawLine, std::uint64_t id = 0);
} // namespace BrewLogParser

// Follows an upgrade's lines: which package, which phase, how far.
class BrewProgressTracker {
public:
    enum class Phase { Fetching, Downloading, Pouring, Installing, Linking, Cleaning };
    struct Update {
        std::optional<QString> package;
        std::optional<Phase> phase;
        std::optional<double> percent; // 0…1
        bool operator==(const Update&) const = default;
    };

    static QString rawValue(Phase phase);
    static std::optional<Phase> phaseFromRaw(const QString& raw);

    // `line` without escape codes; an update when the line changes the state.
    std::optional<Update> feed(const QString& line);
    const QSet<QString>& packages() const { return packages_; }
    const Update& current() const { return current_; }

private:
    Update setPhase(Phase phase);

    QSet<QString> packages_;
    Update current_;
};

// A failed command explained in a sentence, with the label of the retry button.
struct BrewFailure {
    QString message;
    QString retryLabel;
    static BrewFailure explain(const QString& package, const QString& displayName,
                               const QStringList& log);
};

} // namespace tarvik
