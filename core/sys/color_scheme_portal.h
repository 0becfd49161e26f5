#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QVariant>
#include <optional>

namespace tarvik {

// The desktop's light/dark preference, as the XDG settings portal's "color-scheme" says it.
enum class ColorScheme { NoPreference, PreferDark, PreferLight };

// The portal's value (0 none, 1 dark, 2 light), wrapped in as many variants as the call or the
// signal gives; anything else is no preference.
ColorScheme colorSchemeFromPortal(const QVariant& value);

// Reads the preference from org.freedesktop.portal.Settings on the session bus and tells when the
// person changes it. Without a portal (no desktop, a bare X server) there is no preference and
// nothing is ever told.
class ColorSchemePortal : public QObject {
    Q_OBJECT
public:
    explicit ColorSchemePortal(QDBusConnection bus = QDBusConnection::sessionBus(),
                               QObject* parent = nullptr);

    // The preference now; empty when no portal answers within a moment.
    std::optional<ColorScheme> read();

signals:
    void changed(tarvik::ColorScheme scheme);

private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    QDBusConnection bus_;
};

} // namespace tarvik
