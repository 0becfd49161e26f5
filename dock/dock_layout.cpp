#include "dock/dock_layout.h"

#include "core/sys/desktop_apps.h"
#include "dock/dock_apps_codec.h"
#include "dock/folder_bundle_builder.h"

#include <QSet>
#include <algorithm>
#include <utility>

namespace tarvik {
namespace {

QString titleOf(const QString& tile) {
    if (const auto spacer = DockSpacers::kindOf(tile)) {
        return DockSpacers::title(*spacer);
    }
    if (const auto app = DesktopApps::find(tile); app && !app->name.isEmpty()) {
        return app->name;
    }
    return tile.endsWith(QLatin1String(".desktop")) ? tile.chopped(8) : tile;
}

} // namespace

DockLayout::DockLayout(DockPreferences preferences, DockPaths paths)
    : preferences_(std::move(preferences)), paths_(std::move(paths)) {}

QString DockLayout::changedMeanwhile() {
    return QStringLiteral("The Dock changed since this list loaded, so it was reloaded. Make your "
                          "changes again.");
}

QString DockLayout::emptyTitle() {
    return QStringLiteral("No apps in the Dock");
}

QString DockLayout::emptyDetail() {
    return QStringLiteral("Add apps to the Dock first, then separate them with spaces here");
}

QStringList DockLayout::tiles() const {
    QStringList out;
    out.reserve(static_cast<qsizetype>(rows_.size()));
    for (const Row& row : rows_) {
        out.append(row.tile);
    }
    return out;
}

bool DockLayout::hasChanges() const {
    return DockAppsCodec::signature(tiles()) != loadedSignature_;
}

int DockLayout::spacerCount() const {
    return static_cast<int>(std::count_if(rows_.begin(), rows_.end(),
                                          [](const Row& r) { return r.spacer.has_value(); }));
}

void DockLayout::reload() {
    rows_.clear();
    const QStringList tiles = preferences_.tiles();
    for (const QString& tile : tiles) {
        rows_.push_back({QUuid::createUuid(), tile, titleOf(tile), DockSpacers::kindOf(tile)});
    }
    loadedSignature_ = DockAppsCodec::signature(tiles);
    selection_.reset();
    error_.reset();
}

QUuid DockLayout::addSpacer(DockSpacer kind, std::optional<QUuid> after) {
    Row row{QUuid::createUuid(), DockSpacers::newTile(kind, tiles()), DockSpacers::title(kind),
            kind};
    auto at = rows_.end();
    if (after) {
        const auto found =
            std::find_if(rows_.begin(), rows_.end(), [&](const Row& r) { return r.id == *after; });
        if (found != rows_.end()) {
            at = found + 1;
        }
    }
    const QUuid id = row.id;
    rows_.insert(at, std::move(row));
    return id;
}

bool DockLayout::removeSpacer(const QUuid& id) {
    const auto found = std::find_if(rows_.begin(), rows_.end(),
                                    [&](const Row& r) { return r.id == id && r.spacer; });
    if (found == rows_.end()) {
        return false;
    }
    rows_.erase(found);
    if (selection_ == id) {
        selection_.reset();
    }
    return true;
}

bool DockLayout::apply() {
    error_.reset();
    if (DockAppsCodec::signature(preferences_.tiles()) != loadedSignature_) {
        reload();
        error_ = changedMeanwhile();
        return false;
    }
    const QStringList wanted = tiles();
    const DockFolderBundleBuilder builder(
        paths_, DockFolderStore(DockFolderStore::defaultSupportDirectory()));
    try {
        // A spacer's launcher must exist before the dock lists it, or the dock skips the tile.
        for (const QString& tile : wanted) {
            if (DockSpacers::kindOf(tile)) {
                builder.buildSpacer(tile);
            }
        }
        preferences_.setTiles(wanted);
    } catch (const DockFolderBundleBuilderError& e) {
        error_ = QStringLiteral("Couldn't update the Dock: %1").arg(e.message);
        return false;
    } catch (const DockPreferencesError& e) {
        error_ = QStringLiteral("Couldn't update the Dock: %1").arg(e.message);
        return false;
    }
    const QSet<QString> kept(wanted.begin(), wanted.end());
    for (const QString& spacer : builder.builtSpacers()) {
        if (!kept.contains(spacer)) {
            builder.removeSpacer(spacer);
        }
    }
    reload();
    return true;
}

} // namespace tarvik
