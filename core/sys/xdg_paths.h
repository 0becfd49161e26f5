#pragma once

#include <QString>

// XDG base directories, read from the environment on every call so a changed HOME or
// XDG_* variable (as in tests) takes effect at once.
namespace tarvik::xdg {

QString home();
QString configHome();   // $XDG_CONFIG_HOME or ~/.config
QString dataHome();     // $XDG_DATA_HOME or ~/.local/share
QString stateHome();    // $XDG_STATE_HOME or ~/.local/state
QString cacheHome();    // $XDG_CACHE_HOME or ~/.cache
QString autostartDir(); // configHome()/autostart
// Where every "Tarvik/…" file lives: dataHome()/Tarvik.
QString applicationSupport();

} // namespace tarvik::xdg
