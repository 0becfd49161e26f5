#include "core/sys/color_scheme_portal.h"

#include <QDBusMessage>
#include <QDBusVariant>

namespace tarvik {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");
// Start-up waits this long at most: a desktop's portal answers in milliseconds, and a missing
// one must not hold the window back.
constexpr int kReadTimeoutMs = 300;

} // namespace

ColorScheme colorSchemeFromPortal(const QVariant& value) {
    QVariant v = value;
    // Read() answers a variant inside a variant; SettingChanged gives one.
    for (int depth = 0; depth < 4 && v.canConvert<QDBusVariant>() &&
                        v.metaType() == QMetaType::fromType<QDBusVariant>();
         ++depth) {
        v = v.value<QDBusVariant>().variant();
    }
    bool ok = false;
    const uint n = v.toUInt(&ok);
    if (!ok) {
        return ColorScheme::NoPreference;
    }
    switch (n) {
    case 1:
        return ColorScheme::PreferDark;
    case 2:
        return ColorScheme::PreferLight;
    default:
        return ColorScheme::NoPreference;
    }
}

ColorSchemePortal::ColorSchemePortal(QDBusConnection bus, QObject* parent)
    : QObject(parent), bus_(std::move(bus)) {
    if (bus_.isConnected()) {
        // Any sender: the portal may be started (or restarted) after Tarvik.
        // The slot's argument type is looked up by name, so it must be known before connecting.
        qRegisterMetaType<QDBusVariant>();
        bus_.connect(QString(), kPath, kInterface, QStringLiteral("SettingChanged"), this,
                     SLOT(settingChanged(QString, QString, QDBusVariant)));
    }
}

std::optional<ColorScheme> ColorSchemePortal::read() {
    if (!bus_.isConnected()) {
        return std::nullopt;
    }
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
    call << kGroup << kKey;
    const QDBusMessage reply = bus_.call(call, QDBus::Block, kReadTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return std::nullopt;
    }
    return colorSchemeFromPortal(reply.arguments().constFirst());
}

void ColorSchemePortal::settingChanged(const QString& group, const QString& key,
                                       const QDBusVariant& value) {
    if (group == kGroup && key == kKey) {
        emit changed(colorSchemeFromPortal(value.variant()));
    }
}

} // namespace tarvik
