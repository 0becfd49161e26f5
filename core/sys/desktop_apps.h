#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace tarvik {

// An installed application as GIO sees its desktop entry: the id ("org.gnome.Nautilus.desktop")
// by which docks and favourites name it, its localised name, the entry's file and its icon.
struct DesktopApp {
    QString id;
    QString name;
    QString path;
    QString icon; // a theme icon name, an absolute file, or empty
};

namespace DesktopApps {

// The applications a launcher would list (NoDisplay, Hidden and other desktops' entries left
// out), sorted by name. Entries are read anew on every call.
std::vector<DesktopApp> installed();
// The application with this desktop-file id, listed or not; none when no entry has that id.
std::optional<DesktopApp> find(const QString& id);
// Starts the application of the entry at `path` the way a launcher does (Exec's field codes
// expanded, no shell, its own startup notification). False with `error` set on failure.
bool launch(const QString& path, QString* error);
// The application the system opens links of `scheme` with, by desktop-file id; empty if none.
QString schemeHandler(const QString& scheme);
// Makes the entry at `path` the handler of `scheme` links. False with `error` set on failure.
bool setSchemeHandler(const QString& path, const QString& scheme, QString* error);

} // namespace DesktopApps
} // namespace tarvik
