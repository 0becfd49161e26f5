#pragma once

#include <QWidget>

class QLabel;

namespace tarvik {

class KeyboardLock;

// The full-screen cover shown while the keyboard is locked. It holds the window system's
// keyboard and pointer grab and hands every key press to the lock; clicks go nowhere.
class LockOverlay : public QWidget {
    Q_OBJECT
public:
    explicit LockOverlay(KeyboardLock& lock);

    // Shows over every screen and takes keyboard and pointer; false, still showing and holding
    // neither, when the window system refused either of them.
    bool showAndGrab();
    void releaseAndClose();
    void setDevicesHeld(bool held);

protected:
    bool event(QEvent* e) override;
    void paintEvent(QPaintEvent* e) override;

private:
    void showCount(int count);

    KeyboardLock& lock_;
    QLabel* count_;
    QLabel* note_;
};

} // namespace tarvik
