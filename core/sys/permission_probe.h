#pragma once

// The Linux probes behind the four permissions: files below a root, input devices, the sound
// server's tools and the session bus.
#include "core/shell/app_permission.h"

#include <QString>
#include <QStringList>

namespace tarvik {

// What "open settings" does for a permission on this desktop: a command to run, or, where no
// settings panel is known, the explanation to show instead.
struct SettingsAction {
    QStringList command;
    QString explanation;
};

// The Linux probes. Files are read below `root` (normally "/") so tests can point it at a tree.
class PermissionProbe {
public:
    struct Environment {
        QString sessionType;    // XDG_SESSION_TYPE
        QString display;        // DISPLAY
        QString waylandDisplay; // WAYLAND_DISPLAY
        QString currentDesktop; // XDG_CURRENT_DESKTOP
        static Environment fromProcess();
    };

    explicit PermissionProbe(QString root = QStringLiteral("/"),
                             Environment env = Environment::fromProcess());

    // Full disk access is missing only inside a Flatpak sandbox without the home folder.
    PermissionStatus fullDiskAccess() const;
    // Input can be grabbed with a readable input device, or by any client of an X11 session.
    PermissionStatus accessibility() const;
    // A PipeWire or PulseAudio capture source exists (asked through pactl or pw-dump).
    PermissionStatus microphone() const;
    // org.freedesktop.Notifications answers (or can be started) on the session bus.
    PermissionStatus notifications() const;

    PermissionStatus status(AppPermission permission) const;
    PermissionStatuses currentStatuses() const;

    SettingsAction settingsAction(AppPermission permission) const;
    // Opens the matching settings panel; returns the explanation to show when it could not.
    QString openSettings(AppPermission permission) const;
    // Linux asks for none of these at run time, so requesting is opening the settings.
    QString requestOrOpenSettings(AppPermission permission) const {
        return openSettings(permission);
    }

private:
    QString root_;
    Environment env_;
};

} // namespace tarvik
