#pragma once

#include <QDBusConnection>
#include <QString>
#include <optional>

namespace tarvik {

// The desktop's idle inhibit (org.freedesktop.ScreenSaver on the session bus), which keeps the
// display from blanking; logind's idle lock alone does not reach every desktop's screen saver.
class ScreenSaverInhibit {
public:
    explicit ScreenSaverInhibit(QDBusConnection bus = QDBusConnection::sessionBus());
    ~ScreenSaverInhibit();
    ScreenSaverInhibit(const ScreenSaverInhibit&) = delete;
    ScreenSaverInhibit& operator=(const ScreenSaverInhibit&) = delete;

    // False when no desktop answers; keeping awake then relies on logind alone.
    bool inhibit(const QString& application, const QString& reason);
    void release();
    bool isHeld() const { return cookie_.has_value(); }

private:
    QDBusConnection bus_;
    std::optional<uint> cookie_;
};

} // namespace tarvik
