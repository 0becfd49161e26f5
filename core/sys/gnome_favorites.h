#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

// The dock's list of app tiles: GNOME Shell's "favorite-apps" (org.gnome.shell), a list of
// desktop-file ids that GNOME's dash, Ubuntu Dock and Dash to Dock all show and follow live.
class GnomeFavorites {
public:
    static constexpr const char* kSchema = "org.gnome.shell";
    static constexpr const char* kKey = "favorite-apps";

    // Why the list can't be used here, or none when it can: the schema isn't installed (no
    // GNOME Shell) or lacks the key. Looked up first, since opening a missing schema aborts.
    static std::optional<QString> unavailableReason();
    // The current list; empty when unavailable.
    static QStringList read();
    // Writes and flushes the list; false with `error` set when it wasn't written.
    static bool write(const QStringList& ids, QString* error);
};

} // namespace tarvik
