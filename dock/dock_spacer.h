#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

// A blank tile between dock apps. On the desktop a spacer is a launcher of its own with a
// blank icon and no name: "org.pellor.tarvik.spacer.<n>.desktop" or
// "org.pellor.tarvik.small-spacer.<n>.desktop", one per tile since a dock shows an id once.
enum class DockSpacer { Regular, Small };

namespace DockSpacers {
QString id(DockSpacer kind);    // "spacer-tile", "small-spacer-tile"
QString title(DockSpacer kind); // "Space", "Small Space"
// The kind of spacer a tile is, or none for any other tile.
std::optional<DockSpacer> kindOf(const QString& tile);
// A tile id for a new spacer that differs from every id in `taken`.
QString newTile(DockSpacer kind, const QStringList& taken);
} // namespace DockSpacers

} // namespace tarvik
