#pragma once

#include <QString>

namespace tarvik {

// Where the dock's generated files go and the programs their entries run.
struct DockPaths {
    QString applications; // desktop entries: ~/.local/share/applications
    QString icons;        // the user's hicolor theme: ~/.local/share/icons/hicolor
    QString autostart;    // ~/.config/autostart
    QString tarvik;       // the main program
    QString helper;       // tarvik-folder, expected beside the main program

    // From the XDG folders of the moment and the running program's own location.
    static DockPaths current();
};

} // namespace tarvik
