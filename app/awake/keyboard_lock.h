#pragma once

#include "core/awake/escape_unlock_tracker.h"
#include "core/sys/input_device_grab.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

namespace tarvik {

class LockOverlay;

// The keyboard lock for wiping the keys: a full-screen overlay that takes the keyboard and
// pointer from the desktop, plus the kernel's exclusive grab of the input devices when Tarvik
// may open them, which also stops the desktop's own shortcuts. Only five quick Escapes unlock.
class KeyboardLock : public QObject {
    Q_OBJECT
public:
    explicit KeyboardLock(QString inputDir = QStringLiteral("/dev/input"),
                          QObject* parent = nullptr);
    ~KeyboardLock() override;

    bool isLocked() const { return locked_; }
    int escapeCount() const { return escapeCount_; }
    // Whether the input devices are held too, not only the window system's input.
    bool holdsDevices() const { return devices_.grabbedCount() > 0; }
    // Whether locking would hold the input devices too (Tarvik may open them).
    bool mayHoldDevices() const { return devices_.mayOpenDevices(); }
    // What to do after locking failed, the detail under keyboardLockFailed().
    const QString& failureDetail() const { return failureDetail_; }

    // Locks; false when the keyboard could not be taken (failureDetail() says why).
    bool begin();
    void unlock();

    // A key went down while locked, seen by the overlay or the devices. Seconds of uptime.
    void keyPressed(bool isEscape, bool isAutoRepeat, double at);
    static double uptimeSeconds();

signals:
    void lockedChanged(bool locked);
    void escapeCountChanged(int count);
    void failed(const QString& title, const QString& detail);

private:
    void setEscapeCount(int count);

    EscapeUnlockTracker tracker_{kEscapesToUnlock, kEscapeWindowSeconds};
    InputDeviceGrab devices_;
    QPointer<LockOverlay> overlay_;
    QTimer staleCount_;
    bool locked_ = false;
    int escapeCount_ = 0;
    QString failureDetail_;
};

} // namespace tarvik
