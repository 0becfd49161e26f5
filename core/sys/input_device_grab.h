#pragma once

#include <QObject>
#include <QString>
#include <memory>
#include <vector>

namespace tarvik {

// Takes every keyboard and pointing device under /dev/input for this process alone (the
// kernel's exclusive grab), so not even the desktop's own shortcuts see a key, and reports the
// key presses it swallows. Opening the devices needs read access to them (the "input" group
// on most systems); without it nothing is grabbed and the window's own grab has to do.
class InputDeviceGrab : public QObject {
    Q_OBJECT
public:
    explicit InputDeviceGrab(QString inputDir = QStringLiteral("/dev/input"),
                             QObject* parent = nullptr);
    ~InputDeviceGrab() override;

    // Whether at least one keyboard can be opened here.
    bool mayOpenDevices() const;
    // Grabs what it can open; returns how many devices it holds.
    int grabAll();
    void releaseAll();
    int grabbedCount() const { return static_cast<int>(devices_.size()); }

signals:
    // A key went down (Linux key code, KEY_ESC is 1); `repeat` for the keyboard's auto-repeat.
    // Modifier and lock keys (Shift, Ctrl, Alt, AltGr, Super, Caps Lock, Fn) are not reported.
    void keyPressed(int code, bool repeat);

private:
    struct Device;
    void drain(Device& device);
    void readKeys(Device& device);

    QString inputDir_;
    std::vector<std::unique_ptr<Device>> devices_;
    // Devices released from a keyPressed handler while drain() was reading them.
    std::vector<std::unique_ptr<Device>> released_;
    bool draining_ = false;
};

} // namespace tarvik
