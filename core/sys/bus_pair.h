#pragma once

#include <QDBusConnection>

namespace tarvik {

// The system and session buses for a client of both; tests give private ones.
struct BusPair {
    QDBusConnection system = QDBusConnection::systemBus();
    QDBusConnection session = QDBusConnection::sessionBus();
};

} // namespace tarvik
