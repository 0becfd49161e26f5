#include "core/sys/permission_probe.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <optional>
#include <unistd.h>
#include <utility>

namespace tarvik {
namespace {

QString env(const char* name) {
    return qEnvironmentVariable(name);
}

// Runs a small query tool; empty when it is missing, fails or hangs.
std::optional<QString> runTool(const QString& program, const QStringList& args) {
    const QString path = QStandardPaths::findExecutable(program);
    if (path.isEmpty()) {
        return std::nullopt;
    }
    QProcess p;
    p.start(path, args);
    if (!p.waitForFinished(3000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        p.kill();
        p.waitForFinished(500);
        return std::nullopt;
    }
    return QString::fromUtf8(p.readAllStandardOutput());
}

bool isGnome(const QString& desktop) {
    return desktop.contains(QLatin1String("GNOME"), Qt::CaseInsensitive) ||
           desktop.contains(QLatin1String("Unity"), Qt::CaseInsensitive) ||
           desktop.contains(QLatin1String("Budgie"), Qt::CaseInsensitive);
}

bool isKde(const QString& desktop) {
    return desktop.contains(QLatin1String("KDE"), Qt::CaseInsensitive);
}

} // namespace

PermissionProbe::Environment PermissionProbe::Environment::fromProcess() {
    return {env("XDG_SESSION_TYPE"), env("DISPLAY"), env("WAYLAND_DISPLAY"),
            env("XDG_CURRENT_DESKTOP")};
}

PermissionProbe::PermissionProbe(QString root, Environment environment)
    : root_(std::move(root)), env_(std::move(environment)) {}

PermissionStatus PermissionProbe::fullDiskAccess() const {
    QFile info(root_ + QStringLiteral("/.flatpak-info"));
    if (!info.exists()) {
        return PermissionStatus::Granted;
    }
    if (!info.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return PermissionStatus::NotDetermined;
    }
    bool inContext = false;
    while (!info.atEnd()) {
        const QString line = QString::fromUtf8(info.readLine()).trimmed();
        if (line.startsWith('[')) {
            inContext = line == QLatin1String("[Context]");
            continue;
        }
        if (!inContext || !line.startsWith(QLatin1String("filesystems="))) {
            continue;
        }
        for (QString fs : line.mid(12).split(';', Qt::SkipEmptyParts)) {
            fs = fs.section(':', 0, 0); // drop ":ro" / ":rw"
            if (fs == QLatin1String("home") || fs == QLatin1String("host")) {
                return PermissionStatus::Granted;
            }
        }
    }
    return PermissionStatus::NotGranted;
}

PermissionStatus PermissionProbe::accessibility() const {
    const QDir input(root_ + QStringLiteral("/dev/input"));
    for (const QString& name :
         input.entryList({QStringLiteral("event*")}, QDir::System | QDir::Files)) {
        if (::access(QFile::encodeName(input.filePath(name)).constData(), R_OK) == 0) {
            return PermissionStatus::Granted;
        }
    }
    const bool x11 =
        env_.sessionType == QLatin1String("x11") ||
        (env_.sessionType.isEmpty() && !env_.display.isEmpty() && env_.waylandDisplay.isEmpty());
    return x11 ? PermissionStatus::Granted : PermissionStatus::NotGranted;
}

PermissionStatus PermissionProbe::microphone() const {
    if (auto out =
            runTool(QStringLiteral("pactl"),
                    {QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sources")})) {
        // Monitor sources only echo what is played; they are not microphones.
        for (const QString& line : out->split('\n', Qt::SkipEmptyParts)) {
            const QString name = line.section('\t', 1, 1);
            if (!name.isEmpty() && !name.endsWith(QLatin1String(".monitor"))) {
                return PermissionStatus::Granted;
            }
        }
        return PermissionStatus::NotGranted;
    }
    if (auto out = runTool(QStringLiteral("pw-dump"), {})) {
        return out->contains(QLatin1String("\"Audio/Source\"")) ? PermissionStatus::Granted
                                                                : PermissionStatus::NotGranted;
    }
    return PermissionStatus::NotDetermined;
}

PermissionStatus PermissionProbe::notifications() const {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return PermissionStatus::NotGranted;
    }
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    if (bus.interface()->isServiceRegistered(service)) {
        return PermissionStatus::Granted;
    }
    const QDBusReply<QStringList> activatable =
        bus.interface()->call(QStringLiteral("ListActivatableNames"));
    return activatable.isValid() && activatable.value().contains(service)
               ? PermissionStatus::Granted
               : PermissionStatus::NotGranted;
}

PermissionStatus PermissionProbe::status(AppPermission permission) const {
    switch (permission) {
    case AppPermission::FullDiskAccess:
        return fullDiskAccess();
    case AppPermission::Accessibility:
        return accessibility();
    case AppPermission::Microphone:
        return microphone();
    case AppPermission::Notifications:
        return notifications();
    }
    return PermissionStatus::NotDetermined;
}

PermissionStatuses PermissionProbe::currentStatuses() const {
    PermissionStatuses out;
    for (auto p : kAllPermissions) {
        out.status[static_cast<int>(p)] = status(p);
    }
    return out;
}

SettingsAction PermissionProbe::settingsAction(AppPermission permission) const {
    const QString& d = env_.currentDesktop;
    switch (permission) {
    case AppPermission::FullDiskAccess:
        if (isKde(d)) {
            return {{QStringLiteral("systemsettings"), QStringLiteral("kcm_flatpak")}, {}};
        }
        if (isGnome(d)) {
            return {{QStringLiteral("gnome-control-center"), QStringLiteral("applications")}, {}};
        }
        return {{},
                QStringLiteral("Tarvik runs in a sandbox without your home folder. Allow it with "
                               "Flatseal, or run: flatpak override --user --filesystem=home "
                               "org.pellor.tarvik")};
    case AppPermission::Accessibility:
        return {{},
                QStringLiteral("To lock the keyboard on every screen, Tarvik needs to read your "
                               "input devices. Add yourself to the \"input\" group (sudo usermod "
                               "-aG input $USER), then sign out and in again.")};
    case AppPermission::Microphone:
        if (isKde(d)) {
            return {{QStringLiteral("systemsettings"), QStringLiteral("kcm_pulseaudio")}, {}};
        }
        if (isGnome(d)) {
            return {{QStringLiteral("gnome-control-center"), QStringLiteral("sound")}, {}};
        }
        return {{},
                QStringLiteral("No microphone was found. Connect one, or choose an input device "
                               "in your desktop's sound settings.")};
    case AppPermission::Notifications:
        if (isKde(d)) {
            return {{QStringLiteral("systemsettings"), QStringLiteral("kcm_notifications")}, {}};
        }
        if (isGnome(d)) {
            return {{QStringLiteral("gnome-control-center"), QStringLiteral("notifications")}, {}};
        }
        return {{},
                QStringLiteral("No notification service answers on this desktop. Start one (your "
                               "desktop's own, or one such as dunst) to see Tarvik's reminders.")};
    }
    return {};
}

QString PermissionProbe::openSettings(AppPermission permission) const {
    SettingsAction action = settingsAction(permission);
    if (!action.command.isEmpty()) {
        const QString program = QStandardPaths::findExecutable(action.command.takeFirst());
        if (!program.isEmpty() && QProcess::startDetached(program, action.command)) {
            return {};
        }
        return QStringLiteral("The desktop's settings could not be opened. Open its %1 settings "
                              "yourself.")
            .arg(title(permission));
    }
    return action.explanation;
}

} // namespace tarvik
