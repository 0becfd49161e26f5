#pragma once

// Tarvik's texts were first written for another desktop and named it. This edition says these
// words in their place, and only here, so every such text reads the same way:
// the platform's name -> "the system" ("The system" opening a sentence), its machines ->
// "computer", their lid -> "laptop lid", its terminal application -> "a terminal", its menu
// bar (where Tarvik's icon lives) -> "the tray", a running app's Dock icon -> "the taskbar
// entry", a path through its settings -> what to do on Linux.
#include <QString>

namespace tarvik::words {

inline QString theSystem() {
    return QStringLiteral("the system");
}
inline QString theSystemOpening() {
    return QStringLiteral("The system");
}
inline QString computer() {
    return QStringLiteral("computer");
}
inline QString laptopLid() {
    return QStringLiteral("laptop lid");
}
inline QString aTerminal() {
    return QStringLiteral("a terminal");
}
inline QString theMenuBar() {
    return QStringLiteral("the tray");
}
inline QString theDockIcon() {
    return QStringLiteral("the taskbar entry");
}
// Where the Accessibility permission is turned on, said after "Turn it on ". Desktops keep no
// switch for it: reading the input devices is what it grants, and their group gives that.
inline QString whereToTurnOnAccessibility() {
    return QStringLiteral("by adding yourself to the “input” group (sudo usermod -aG input $USER) "
                          "and signing in again");
}

} // namespace tarvik::words
