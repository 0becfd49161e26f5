#include "core/sys/connection_label.h"

#include "core/sys/system_files.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QRegularExpression>
#include <QStringList>
#include <system_error>

namespace tarvik {

std::optional<QString> connectionLabelFromSys(const std::filesystem::path& root) {
    const auto routes = platform::readSmallFile(root, "proc/net/route");
    if (!routes) {
        return std::nullopt;
    }
    // Iface Destination Gateway Flags …; the default route has destination 00000000 and is up.
    QString iface;
    for (const QString& line : QString::fromStdString(*routes).split(QLatin1Char('\n')).mid(1)) {
        const QStringList f =
            line.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
        if (f.size() > 3 && f[1] == QLatin1String("00000000") &&
            (f[3].toUInt(nullptr, 16) & 1U) != 0) {
            iface = f[0];
            break;
        }
    }
    if (iface.isEmpty()) {
        return std::nullopt;
    }
    const std::string dir = "sys/class/net/" + iface.toStdString();
    std::error_code ec;
    if (std::filesystem::exists(root / dir / "wireless", ec) ||
        std::filesystem::exists(root / dir / "phy80211", ec)) {
        return QStringLiteral("Wi-Fi");
    }
    if (iface.startsWith(QLatin1String("wwan")) || iface.startsWith(QLatin1String("rmnet"))) {
        return QStringLiteral("Cellular");
    }
    const auto type = platform::readInteger(root, dir + "/type");
    // ARPHRD_ETHER: a wired port, unless it is a virtual device (no "device" link to hardware).
    if (type == 1 && std::filesystem::exists(root / dir / "device", ec)) {
        return QStringLiteral("Ethernet");
    }
    return QStringLiteral("Other");
}

NetworkConnection connectionFromNetworkManager(const QString& primaryType, unsigned metered) {
    NetworkConnection c;
    // NM_METERED_YES and NM_METERED_GUESS_YES.
    c.metered = metered == 1 || metered == 3;
    if (primaryType.isEmpty()) {
        return c;
    }
    bool cellular = false;
    if (primaryType == QLatin1String("802-3-ethernet")) {
        c.label = QStringLiteral("Ethernet");
    } else if (primaryType == QLatin1String("802-11-wireless")) {
        c.label = QStringLiteral("Wi-Fi");
    } else if (primaryType == QLatin1String("gsm") || primaryType == QLatin1String("cdma")) {
        c.label = QStringLiteral("Cellular");
        cellular = true;
    } else {
        c.label = QStringLiteral("Other");
    }
    if (c.metered && !cellular) {
        *c.label += QStringLiteral(" (Personal Hotspot)");
    }
    return c;
}

NetworkConnection currentConnection() {
    QDBusInterface nm(QStringLiteral("org.freedesktop.NetworkManager"),
                      QStringLiteral("/org/freedesktop/NetworkManager"),
                      QStringLiteral("org.freedesktop.NetworkManager"),
                      QDBusConnection::systemBus());
    if (nm.isValid()) {
        const QVariant type = nm.property("PrimaryConnectionType");
        const QVariant metered = nm.property("Metered");
        if (type.isValid()) {
            return connectionFromNetworkManager(type.toString(), metered.toUInt());
        }
    }
    return {connectionLabelFromSys(), false};
}

} // namespace tarvik
