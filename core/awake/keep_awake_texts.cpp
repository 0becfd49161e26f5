#include "core/awake/keep_awake_texts.h"

#include "core/text/platform_words.h"

namespace tarvik::awake_text {

QString endTime(const QDateTime& end, const QDateTime& now) {
    const QDateTime local = end.toLocalTime();
    if (local.date() == now.toLocalTime().date()) {
        return local.toString(QStringLiteral("HH:mm"));
    }
    return local.toString(QStringLiteral("ddd HH:mm"));
}

QString status(const KeepAwakeState& state, const QDateTime& now) {
    if (!state.isActive) {
        return QStringLiteral("Sleeping normally");
    }
    if (!state.until) {
        return QStringLiteral("Until you turn it off");
    }
    return QStringLiteral("%1, then your sleep settings apply").arg(endTime(*state.until, now));
}

QString reason(const KeepAwakeState& state) {
    if (!state.isActive) {
        return {};
    }
    if (state.reason == KeepAwakeState::Reason::Schedule && state.schedule) {
        return QStringLiteral("Kept awake by the schedule “%1”").arg(state.schedule->displayName());
    }
    return QStringLiteral("Kept awake by hand");
}

QString followsOwnSettings() {
    return QStringLiteral("Your %1 follows its own sleep settings").arg(words::computer());
}

QString sleepSettingsApply() {
    return QStringLiteral("Sleep settings apply");
}

QString worksWhileRunning() {
    return QStringLiteral("Works while Tarvik is in %1. Closing a %2 still sleeps it unless the "
                          "lid option above is on.")
        .arg(words::theMenuBar(), words::laptopLid());
}

QString lidOption() {
    return QStringLiteral("Keep running with the lid closed");
}

QString lidDescription() {
    // Tarvik asks for nothing itself: logind takes the lid lock, and polkit may ask first.
    return QStringLiteral("Your system may ask for your password when keeping awake starts");
}

QString lidOnDescription() {
    return QStringLiteral("Closing the lid won't sleep this %1. Mind the heat in a bag.")
        .arg(words::computer());
}

QString lidRefused() {
    return QStringLiteral("Needs your administrator password, which wasn't given");
}

QString lidFailed(const QString& why) {
    return QStringLiteral("Couldn't keep the %1 running with the lid closed: %2")
        .arg(words::computer(), why);
}

QString keyboardCleaning() {
    return QStringLiteral("Keyboard cleaning");
}

QString keyboardCleaningDetail() {
    return QStringLiteral("Locks keys and trackpad while you wipe them down");
}

QString keyboardMenuText(int required) {
    return QStringLiteral("Lock every key so you can wipe the keyboard. Press Escape %1 times to "
                          "unlock.")
        .arg(required);
}

QString keyboardLockedText() {
    return QStringLiteral("Wipe away. Keys and trackpad are ignored until you unlock");
}

QString keyboardLockFailed() {
    return QStringLiteral("Couldn't lock the keyboard");
}

QString keyboardLockFailedDetail() {
    return QStringLiteral("Tarvik needs Accessibility access to block key presses. Turn it on %1, "
                          "then try again.")
        .arg(words::whereToTurnOnAccessibility());
}

QString openAccessibilitySettings() {
    return QStringLiteral("Open Accessibility Settings");
}

QString shortcutsMayStillWork() {
    return QStringLiteral("Some desktop shortcuts may still work while locked. To block them too, "
                          "let Tarvik read the input devices (on most systems: add yourself to "
                          "the “input” group and sign in again).");
}

} // namespace tarvik::awake_text
