#pragma once

// A private D-Bus daemon for one test, and python3-dbusmock services on it, so code that talks
// to logind or the desktop is tested against real D-Bus traffic without touching the machine's
// own buses.
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>
#include <QUuid>
#include <memory>
#include <vector>

namespace tarvik::test {

class PrivateBus {
public:
    PrivateBus() {
        const QString dbus = QStandardPaths::findExecutable("dbus-daemon");
        if (dbus.isEmpty()) {
            return;
        }
        daemon_.start(dbus, {"--session", "--nofork", "--print-address=1"});
        if (daemon_.waitForReadyRead(5000)) {
            address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
        }
    }
    ~PrivateBus() {
        for (auto& p : services_) {
            p->terminate();
            p->waitForFinished(3000);
        }
        if (!name_.isEmpty()) {
            QDBusConnection::disconnectFromBus(name_);
        }
        daemon_.terminate();
        daemon_.waitForFinished(3000);
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool isRunning() const { return !address_.isEmpty(); }
    const QString& address() const { return address_; }

    QDBusConnection connection() {
        if (name_.isEmpty()) {
            name_ = QUuid::createUuid().toString();
        }
        return QDBusConnection::connectToBus(address_, name_);
    }

    // Debian's python3-dbusmock belongs to the system's Python, which may not be first on PATH.
    static QString python() {
        return QFile::exists("/usr/bin/python3") ? QStringLiteral("/usr/bin/python3")
                                                 : QStringLiteral("python3");
    }

    static bool hasDbusMock() {
        QProcess probe;
        probe.start(python(), {"-c", "import dbusmock"});
        return probe.waitForFinished(10000) && probe.exitCode() == 0;
    }

    // Starts `python3 -m dbusmock <arguments>` on this bus and waits until `service` is on it.
    bool startMock(const QString& service, const QStringList& arguments) {
        auto p = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("DBUS_SESSION_BUS_ADDRESS", address_);
        env.insert("DBUS_SYSTEM_BUS_ADDRESS", address_); // system-bus templates such as logind
        p->setProcessEnvironment(env);
        p->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        p->start(python(), QStringList{"-m", "dbusmock"} + arguments);
        if (!p->waitForStarted(5000)) {
            return false;
        }
        services_.push_back(std::move(p));
        QDBusConnection bus = connection();
        for (int i = 0; i < 200; ++i) {
            if (bus.interface()->isServiceRegistered(service).value()) {
                return true;
            }
            QThread::msleep(25);
        }
        return false;
    }

    // A call on the bus; the reply's first argument or an invalid variant.
    QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                      const QString& method, const QVariantList& arguments = {}) {
        auto m = QDBusMessage::createMethodCall(service, path, interface, method);
        m.setArguments(arguments);
        return connection().call(m);
    }

private:
    QProcess daemon_;
    QString address_;
    QString name_;
    std::vector<std::unique_ptr<QProcess>> services_;
};

} // namespace tarvik::test
