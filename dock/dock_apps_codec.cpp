#include "dock/dock_apps_codec.h"

#include "dock/dock_spacer.h"

#include <QSet>

namespace tarvik::DockAppsCodec {

bool isFolderTile(const QString& tile) {
    return tile.startsWith(QLatin1String("org.pellor.tarvik.folder.")) &&
           tile.endsWith(QLatin1String(".desktop"));
}

QStringList sync(const QStringList& tiles, const std::vector<Item>& items,
                 const QStringList& hidden) {
    QSet<QString> wanted;
    for (const Item& item : items) {
        wanted.insert(item.tile);
    }
    const QSet<QString> hide(hidden.begin(), hidden.end());
    QSet<QString> placed;
    QStringList out;
    for (const QString& tile : tiles) {
        if (isFolderTile(tile)) {
            if (wanted.contains(tile) && !placed.contains(tile)) {
                placed.insert(tile);
                out.append(tile);
            }
        } else if (!hide.contains(tile)) {
            out.append(tile);
        }
    }
    for (const Item& item : items) {
        if (!placed.contains(item.tile)) {
            placed.insert(item.tile);
            out.append(item.tile);
        }
    }
    return out;
}

QStringList signature(const QStringList& tiles) {
    QStringList out;
    out.reserve(tiles.size());
    for (const QString& tile : tiles) {
        const auto spacer = DockSpacers::kindOf(tile);
        out.append(spacer ? DockSpacers::id(*spacer) : tile);
    }
    return out;
}

} // namespace tarvik::DockAppsCodec
