#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace tarvik {

// The dock's list of app tiles, as desktop-file ids, and how folders take their places in it.
namespace DockAppsCodec {

// A folder to be placed: its launcher's desktop-file id.
struct Item {
    QString tile;
};

// Whether a tile is one of Tarvik's folder launchers.
bool isFolderTile(const QString& tile);

// The new list of tiles: a folder tile that is one of `items` stays where the user put it; one
// that is not (a deleted folder) is dropped; any other tile is kept unchanged unless it is in
// `hidden` (apps grouped into folders, when their own tiles are to go); items not yet placed
// are appended at the end. Every tile Tarvik doesn't own keeps its order.
QStringList sync(const QStringList& tiles, const std::vector<Item>& items,
                 const QStringList& hidden);

// One string per tile, spacers by their kind: equal signatures mean an unchanged dock.
QStringList signature(const QStringList& tiles);

} // namespace DockAppsCodec
} // namespace tarvik
