#pragma once

class QMenu;

namespace tarvik {

class KeepAwakeController;
class KeyboardLock;

// The tray's Keep Awake menu: the status, the quick durations, turning off, and the keyboard
// lock. It refreshes itself each time it opens.
QMenu* keepAwakeMenu(KeepAwakeController& controller, KeyboardLock& lock, QMenu* parent);
// The commands that start keeping awake: each quick duration, then until turned off.
void addManualSessions(QMenu* menu, KeepAwakeController& controller);

} // namespace tarvik
