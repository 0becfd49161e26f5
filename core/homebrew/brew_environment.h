#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

// Where Homebrew lives: the brew executable, its prefix and its version.
struct BrewEnvironment {
    QString brewPath;
    QString prefix; // brewPath without its last two components: /home/linuxbrew/.linuxbrew
    QString version;

    QString cellar() const { return prefix + QStringLiteral("/Cellar"); }
    QString caskroom() const { return prefix + QStringLiteral("/Caskroom"); }
    QString lockDirectory() const { return prefix + QStringLiteral("/var/homebrew/locks"); }
    bool operator==(const BrewEnvironment&) const = default;
};

// The places brew is looked for first, in this order.
QStringList defaultBrewCandidates();
// The first executable candidate, else the first "brew" on the search path (empty pieces
// skipped), else none.
std::optional<QString> locateBrew(const QStringList& candidates,
                                  const std::optional<QString>& path);
// "Homebrew 4.3.5-12-gabc\n…" gives "4.3.5"; empty output gives "".
QString parseBrewVersion(const QString& output);
QString brewPrefix(const QString& brewPath);

} // namespace tarvik
