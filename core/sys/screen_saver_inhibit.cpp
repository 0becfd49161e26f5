#include "core/sys/screen_saver_inhibit.h"

#include <QDBusMessage>

namespace tarvik {

namespace {

QDBusMessage screenSaverCall(const QString& method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                          QStringLiteral("/org/freedesktop/ScreenSaver"),
                                          QStringLiteral("org.freedesktop.ScreenSaver"), method);
}

} // namespace

ScreenSaverInhibit::ScreenSaverInhibit(QDBusConnection bus) : bus_(std::move(bus)) {}

ScreenSaverInhibit::~ScreenSaverInhibit() {
    release();
}

bool ScreenSaverInhibit::inhibit(const QString& application, const QString& reason) {
    if (cookie_) {
        return true;
    }
    if (!bus_.isConnected()) {
        return false;
    }
    auto call = screenSaverCall(QStringLiteral("Inhibit"));
    call << application << reason;
    const QDBusMessage reply = bus_.call(call, QDBus::Block, 5000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return false;
    }
    cookie_ = reply.arguments().constFirst().toUInt();
    return true;
}

void ScreenSaverInhibit::release() {
    if (!cookie_) {
        return;
    }
    auto call = screenSaverCall(QStringLiteral("UnInhibit"));
    call << *cookie_;
    bus_.call(call, QDBus::Block, 5000);
    cookie_.reset();
}

} // namespace tarvik
