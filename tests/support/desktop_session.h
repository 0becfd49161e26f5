#pragma once

#include <QByteArray>
#include <QColor>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace tarvik::test {

// A desktop for a whole test program: GNOME Shell's settings as GnomeShellSettings makes them
// (a home of its own, the favourites through GSettings' keyfile back-end) and a set of installed
// applications with icons of known colours, the only ones installed. GLib reads these once per
// process, so the session is made in main() before anything asks GSettings or GIO.
class DesktopSession {
public:
    DesktopSession();
    static DesktopSession& current();

    QString home() const;
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
