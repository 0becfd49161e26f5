#include "dock/dock_spacer.h"

#include <QStringList>

namespace tarvik::DockSpacers {
namespace {

QString prefix(DockSpacer kind) {
    return kind == DockSpacer::Small ? QStringLiteral("org.pellor.tarvik.small-spacer.")
                                     : QStringLiteral("org.pellor.tarvik.spacer.");
}

bool numbered(const QString& tile, const QString& start) {
    if (!tile.startsWith(start) || !tile.endsWith(QLatin1String(".desktop"))) {
        return false;
    }
    bool ok = false;
    tile.mid(start.size(), tile.size() - start.size() - 8).toUInt(&ok);
    return ok;
}

} // namespace

QString id(DockSpacer kind) {
    return kind == DockSpacer::Small ? QStringLiteral("small-spacer-tile")
                                     : QStringLiteral("spacer-tile");
}

QString title(DockSpacer kind) {
    return kind == DockSpacer::Small ? QStringLiteral("Small Space") : QStringLiteral("Space");
}

std::optional<DockSpacer> kindOf(const QString& tile) {
    for (DockSpacer kind : {DockSpacer::Regular, DockSpacer::Small}) {
        if (numbered(tile, prefix(kind))) {
            return kind;
        }
    }
    return std::nullopt;
}

QString newTile(DockSpacer kind, const QStringList& taken) {
    for (unsigned n = 1;; ++n) {
        QString tile = prefix(kind) + QString::number(n) + QStringLiteral(".desktop");
        if (!taken.contains(tile)) {
            return tile;
        }
    }
}

} // namespace tarvik::DockSpacers
