#include "app/awake/keyboard_lock.h"

#include "app/awake/lock_overlay.h"
#include "core/awake/keep_awake_texts.h"

#include <linux/input-event-codes.h>
#include <time.h>

namespace tarvik {

namespace {
// The dots go back to zero after a pause long enough that the next press starts afresh anyway.
constexpr int kStaleCountMs = static_cast<int>(kEscapeWindowSeconds * 1000) + 500;
} // namespace

KeyboardLock::KeyboardLock(QString inputDir, QObject* parent)
    : QObject(parent), devices_(std::move(inputDir)) {
    staleCount_.setSingleShot(true);
    staleCount_.setInterval(kStaleCountMs);
    connect(&staleCount_, &QTimer::timeout, this, [this] { setEscapeCount(0); });
    connect(&devices_, &InputDeviceGrab::keyPressed, this, [this](int code, bool repeat) {
        keyPressed(code == KEY_ESC, repeat, uptimeSeconds());
    });
}

KeyboardLock::~KeyboardLock() {
    unlock();
}

double KeyboardLock::uptimeSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_BOOTTIME, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

bool KeyboardLock::begin() {
    if (locked_) {
        return true;
    }
    failureDetail_.clear();
    tracker_ = EscapeUnlockTracker(kEscapesToUnlock, kEscapeWindowSeconds);
    overlay_ = new LockOverlay(*this);
    const bool windowGrab = overlay_->showAndGrab();
    devices_.grabAll();
    // Either one takes every key: the window system's grab on X11, the devices' exclusive grab
    // anywhere (also on Wayland, where windows can't take the keyboard).
    if (!windowGrab && !holdsDevices()) {
        delete overlay_;
        failureDetail_ = awake_text::keyboardLockFailedDetail();
        emit failed(awake_text::keyboardLockFailed(), failureDetail_);
        return false;
    }
    overlay_->setDevicesHeld(holdsDevices());
    locked_ = true;
    setEscapeCount(0);
    emit lockedChanged(true);
    return true;
}

void KeyboardLock::unlock() {
    if (!locked_) {
        return;
    }
    devices_.releaseAll();
    if (overlay_) {
        overlay_->releaseAndClose();
        overlay_->deleteLater();
    }
    locked_ = false;
    staleCount_.stop();
    setEscapeCount(0);
    emit lockedChanged(false);
}

void KeyboardLock::keyPressed(bool isEscape, bool isAutoRepeat, double at) {
    if (!locked_ || isAutoRepeat) {
        return;
    }
    if (!isEscape) {
        if (tracker_.count() > 0) {
            tracker_.otherKeyPressed();
            setEscapeCount(0);
        }
        return;
    }
    const auto outcome = tracker_.escapePressed(at);
    if (outcome.unlock) {
        unlock();
        return;
    }
    setEscapeCount(outcome.count);
    staleCount_.start();
}

void KeyboardLock::setEscapeCount(int count) {
    if (count != escapeCount_) {
        escapeCount_ = count;
        emit escapeCountChanged(count);
    }
}

} // namespace tarvik
