#include "core/sys/desktop_notifier.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>
#include <QStringList>
#include <QVariantMap>

namespace tarvik {

bool notifyDesktop(const QString& summary, const QString& body) {
    QDBusInterface notifications(QStringLiteral("org.freedesktop.Notifications"),
                                 QStringLiteral("/org/freedesktop/Notifications"),
                                 QStringLiteral("org.freedesktop.Notifications"),
                                 QDBusConnection::sessionBus());
    if (!notifications.isValid()) {
        return false;
    }
    const QDBusReply<uint> reply = notifications.call(
        QStringLiteral("Notify"), QStringLiteral("Tarvik"), 0u, QStringLiteral("org.pellor.tarvik"),
        summary, body, QStringList(), QVariantMap(), -1);
    return reply.isValid();
}

} // namespace tarvik
