#pragma once

#include "core/awake/keep_awake_state.h"

#include <QDateTime>
#include <QString>

namespace tarvik::awake_text {

// The status line: "Sleeping normally", "Until you turn it off", or "17:30, then your sleep
// settings apply" (with the weekday when the end is not today).
QString status(const KeepAwakeState& state, const QDateTime& now);
// Why it is kept awake: "Kept awake by hand" or "Kept awake by the schedule “Work”".
QString reason(const KeepAwakeState& state);
// An instant as the status line writes it: "17:30" today, "Tue 09:00" later.
QString endTime(const QDateTime& end, const QDateTime& now);

QString followsOwnSettings(); // shown while not keeping awake
QString sleepSettingsApply(); // the tray's line while not keeping awake
QString worksWhileRunning();

QString lidOption();
QString lidDescription();
QString lidOnDescription();
QString lidRefused(); // logind or polkit said no
// Any other reason the lid could not be held, such as logind not running.
QString lidFailed(const QString& why);

QString keyboardCleaning();
QString keyboardCleaningDetail();
QString keyboardMenuText(int required);
QString keyboardLockedText();
QString keyboardLockFailed();
QString keyboardLockFailedDetail();
QString openAccessibilitySettings(); // the failure's button
// Shown when the input devices can't be opened, so only the window system's grab holds.
QString shortcutsMayStillWork();

} // namespace tarvik::awake_text
