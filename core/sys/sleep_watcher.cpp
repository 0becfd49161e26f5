#include "core/sys/sleep_watcher.h"

#include <QDBusConnection>

namespace tarvik {

SleepWatcher::SleepWatcher(QObject* parent) : QObject(parent) {
    QDBusConnection bus = QDBusConnection::systemBus();
    watching_ = bus.isConnected() &&
                bus.connect(QStringLiteral("org.freedesktop.login1"),
                            QStringLiteral("/org/freedesktop/login1"),
                            QStringLiteral("org.freedesktop.login1.Manager"),
                            QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));
}

void SleepWatcher::prepareForSleep(bool goingToSleep) {
    if (!goingToSleep) {
        emit resumed();
    }
}

} // namespace tarvik
