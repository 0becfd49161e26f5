#pragma once

#include <QObject>

namespace tarvik {

// Keeps the mouse wheel from changing a value by accident: over a combo box, spin box or slider
// that does not have the keyboard focus, the wheel scrolls the page around it instead. Click or
// tab into the control first to change it with the wheel. Installed on the application once.
class WheelGuard : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace tarvik
