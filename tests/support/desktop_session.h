#pragma once

#include <QByteArray>
#include <QColor>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace tarvik::test {

// A desktop for a whole test program: a temporary home with its own XDG folders, GNOME Shell's
// favourites schema compiled into a private schema folder and read through GSettings' keyfile
// back-end, and a set of installed applications. GLib reads these settings once per process,
// so the session is made in main() before anything asks GSettings or GIO, and lasts until exit.
class DesktopSession {
public:
    DesktopSession();
    static DesktopSession& current();

    QString home() const { return dir_.path() + QStringLiteral("/home"); }
    QString dataHome() const { return home() + QStringLiteral("/.local/share"); }
    QString systemData() const { return dir_.path() + QStringLiteral("/usr/share"); }

    // The installed applications: "app<N>.desktop", named "App <N>", each with a plain square
    // icon of its own colour.
    static constexpr int kApps = 14;
    static QString appId(int n);
    static QColor appColour(int n);

    // What another process reads for GNOME's favourites, as `gsettings` prints it.
    static QString favouritesSeenByGsettings();
    // Sets the favourites from another process, as a user dragging tiles in the dash would.
    static void setFavouritesFromOutside(const QStringList& ids);

private:
    QTemporaryDir dir_;
};

} // namespace tarvik::test
