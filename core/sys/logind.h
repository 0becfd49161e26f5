#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QString>
#include <optional>
#include <vector>

namespace tarvik {

// systemd-logind's manager on the system bus: inhibitor locks, the lid and suspend.
class Logind {
public:
    explicit Logind(QDBusConnection bus = QDBusConnection::systemBus());

    // An inhibitor lock lasts as long as its file descriptor stays open: dropping the last copy
    // of `fd` (or the process ending) releases it.
    struct Lock {
        QDBusUnixFileDescriptor fd;
        QString error;        // the service's words when the lock was not given
        bool refused = false; // logind or polkit said no (rather than not answering)
        bool isHeld() const { return fd.isValid(); }
    };
    Lock inhibit(const QString& what, const QString& who, const QString& why,
                 const QString& mode) const;

    struct Inhibitor {
        QString what, who, why, mode;
        uint uid = 0;
        uint pid = 0;
    };
    // The locks held on the machine now; nothing when logind is unreachable.
    std::optional<std::vector<Inhibitor>> inhibitors() const;

    // Whether the lid is shut; nothing when there is no lid or no logind.
    std::optional<bool> lidClosed() const;
    // Asks logind to suspend now; empty when it accepted, its words otherwise.
    QString suspend() const;

    bool isReachable() const;

private:
    QDBusConnection bus_;
};

} // namespace tarvik
