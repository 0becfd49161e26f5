#include "core/sys/logind.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>

namespace tarvik {

namespace {

const QString kService = QStringLiteral("org.freedesktop.login1");
const QString kPath = QStringLiteral("/org/freedesktop/login1");
const QString kManager = QStringLiteral("org.freedesktop.login1.Manager");

// logind answers at once; a hung service must not freeze the window for D-Bus's 25 s.
constexpr int kCallTimeoutMs = 5000;

QString unreachable(const QDBusConnection& bus) {
    return bus.isConnected() ? QStringLiteral("systemd-logind is not running")
                             : QStringLiteral("the system bus is not available");
}

// Whether logind (or polkit, which it asks) said no, rather than failing to answer.
bool isRefusal(const QString& errorName) {
    return errorName == QLatin1String("org.freedesktop.DBus.Error.AccessDenied") ||
           errorName ==
               QLatin1String("org.freedesktop.DBus.Error.InteractiveAuthorizationRequired") ||
           errorName.startsWith(QLatin1String("org.freedesktop.PolicyKit1.Error."));
}

bool isAbsent(const QString& errorName) {
    return errorName == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
           errorName == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

} // namespace

Logind::Logind(QDBusConnection bus) : bus_(std::move(bus)) {}

bool Logind::isReachable() const {
    return bus_.isConnected() && bus_.interface() != nullptr &&
           bus_.interface()->isServiceRegistered(kService).value();
}

Logind::Lock Logind::inhibit(const QString& what, const QString& who, const QString& why,
                             const QString& mode) const {
    if (!bus_.isConnected()) {
        return {{}, unreachable(bus_)};
    }
    auto call = QDBusMessage::createMethodCall(kService, kPath, kManager, "Inhibit");
    call << what << who << why << mode;
    const QDBusMessage reply = bus_.call(call, QDBus::Block, kCallTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        const bool plain = reply.errorMessage().isEmpty() || isAbsent(reply.errorName());
        return {{}, plain ? unreachable(bus_) : reply.errorMessage(), isRefusal(reply.errorName())};
    }
    auto fd = qdbus_cast<QDBusUnixFileDescriptor>(reply.arguments().constFirst());
    if (!fd.isValid()) {
        return {{}, QStringLiteral("systemd-logind gave no lock")};
    }
    return {fd, {}};
}

std::optional<std::vector<Logind::Inhibitor>> Logind::inhibitors() const {
    if (!bus_.isConnected()) {
        return std::nullopt;
    }
    auto call = QDBusMessage::createMethodCall(kService, kPath, kManager, "ListInhibitors");
    const QDBusMessage reply = bus_.call(call, QDBus::Block, kCallTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return std::nullopt;
    }
    std::vector<Inhibitor> out;
    const auto arg = reply.arguments().constFirst().value<QDBusArgument>();
    arg.beginArray();
    while (!arg.atEnd()) {
        Inhibitor i;
        arg.beginStructure();
        arg >> i.what >> i.who >> i.why >> i.mode >> i.uid >> i.pid;
        arg.endStructure();
        out.push_back(std::move(i));
    }
    arg.endArray();
    return out;
}

std::optional<bool> Logind::lidClosed() const {
    if (!bus_.isConnected()) {
        return std::nullopt;
    }
    auto call =
        QDBusMessage::createMethodCall(kService, kPath, "org.freedesktop.DBus.Properties", "Get");
    call << kManager << QStringLiteral("LidClosed");
    const QDBusMessage reply = bus_.call(call, QDBus::Block, kCallTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return std::nullopt;
    }
    const QVariant v = qdbus_cast<QDBusVariant>(reply.arguments().constFirst()).variant();
    return v.typeId() == QMetaType::Bool ? std::optional<bool>(v.toBool()) : std::nullopt;
}

QString Logind::suspend() const {
    if (!bus_.isConnected()) {
        return unreachable(bus_);
    }
    auto call = QDBusMessage::createMethodCall(kService, kPath, kManager, "Suspend");
    call << false; // not interactive: no password prompt from a background decision
    const QDBusMessage reply = bus_.call(call, QDBus::Block, kCallTimeoutMs);
    return reply.type() == QDBusMessage::ReplyMessage ? QString() : reply.errorMessage();
}

} // namespace tarvik
