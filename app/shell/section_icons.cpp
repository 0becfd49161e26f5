#include "app/shell/section_icons.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>
#include <map>

namespace tarvik {

QStringList themeIconNames(std::string_view symbol) {
    static const std::map<std::string_view, QStringList> kNames{
        {"sparkles", {"starred-symbolic", "starred"}},
        {"trash.circle", {"user-trash-symbolic", "user-trash"}},
        {"doc.badge.ellipsis", {"document-open-recent-symbolic", "document-open-recent"}},
        {"doc.on.doc", {"edit-copy-symbolic", "edit-copy"}},
        {"chevron.left.forwardslash.chevron.right",
         {"applications-engineering-symbolic", "applications-development"}},
        {"chart.pie", {"drive-harddisk-symbolic", "drive-harddisk"}},
        {"waveform.path.ecg",
         {"utilities-system-monitor-symbolic", "utilities-system-monitor",
          "power-profile-performance-symbolic"}},
        {"server.rack", {"network-server-symbolic", "network-server"}},
        {"cpu", {"system-run-symbolic", "system-run"}},
        {"speedometer", {"network-transmit-receive-symbolic", "network-transmit-receive"}},
        {"stethoscope", {"emblem-ok-symbolic", "emblem-ok"}},
        {"info.circle", {"dialog-information-symbolic", "dialog-information"}},
        {"xmark.app", {"edit-delete-symbolic", "edit-delete"}},
        {"mug", {"package-x-generic-symbolic", "package-x-generic"}},
        {"square.grid.3x3.fill", {"view-app-grid-symbolic", "view-grid-symbolic", "view-grid"}},
        {"cup.and.heat.waves", {"weather-clear-night-symbolic", "weather-clear-night"}},
        {"slider.horizontal.3", {"preferences-system-symbolic", "preferences-system"}},
        // Health issues.
        {"memorychip", {"media-flash-symbolic", "media-flash", "dialog-warning"}},
        {"arrow.left.arrow.right", {"media-playlist-repeat-symbolic", "view-refresh"}},
        {"thermometer.high", {"weather-clear-symbolic", "dialog-warning-symbolic"}},
        {"internaldrive", {"drive-harddisk-symbolic", "drive-harddisk"}},
        {"battery.25", {"battery-caution-symbolic", "battery-caution"}},
        {"battery.0", {"battery-empty-symbolic", "battery-empty"}},
        {"arrow.clockwise", {"system-reboot-symbolic", "system-reboot"}},
    };
    const auto it = kNames.find(symbol);
    return it == kNames.end() ? QStringList{} : it->second;
}

namespace {

QIcon drawnBadge(const QString& letter) {
    QIcon icon;
    const QColor ink = QGuiApplication::palette().color(QPalette::WindowText);
    for (int size : {16, 22, 32, 48}) {
        QPixmap pm(size, size);
        pm.fill(Qt::transparent);
        QPainter p(&pm);
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(QPen(ink, std::max(1.0, size / 16.0)));
        p.drawEllipse(QRectF(1, 1, size - 2, size - 2));
        QFont f = p.font();
        f.setPixelSize(size * 5 / 8);
        f.setBold(true);
        p.setFont(f);
        p.drawText(QRect(0, 0, size, size), Qt::AlignCenter, letter);
        icon.addPixmap(pm);
    }
    return icon;
}

} // namespace

QIcon symbolIcon(std::string_view symbol, const QString& badge) {
    for (const QString& name : themeIconNames(symbol)) {
        if (QIcon::hasThemeIcon(name)) {
            return QIcon::fromTheme(name);
        }
    }
    return drawnBadge(badge.left(1));
}

QIcon sectionIcon(AppSection section) {
    const SectionInfo& s = info(section);
    return symbolIcon(s.symbol, QString::fromUtf8(s.title.data(), 1));
}

QIcon appIcon() {
    QIcon icon = QIcon::fromTheme(QStringLiteral("org.pellor.tarvik"));
    return icon.isNull() ? QIcon(QStringLiteral(":/icons/org.pellor.tarvik.svg")) : icon;
}

} // namespace tarvik
