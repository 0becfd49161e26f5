#include "app/shell/wheel_guard.h"

#include <QAbstractScrollArea>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>
#include <QScrollBar>
#include <QWidget>

namespace tarvik {
namespace {

// The control a wheel event over `w` would change, if any: the combo box's own line edit or the
// spin box's counts as the control itself.
QWidget* valueControl(QWidget* w) {
    for (int depth = 0; w != nullptr && depth < 2; ++depth, w = w->parentWidget()) {
        if (qobject_cast<QComboBox*>(w) != nullptr ||
            qobject_cast<QAbstractSpinBox*>(w) != nullptr ||
            (qobject_cast<QAbstractSlider*>(w) != nullptr &&
             qobject_cast<QScrollBar*>(w) == nullptr)) {
            return w;
        }
    }
    return nullptr;
}

} // namespace

bool WheelGuard::eventFilter(QObject* watched, QEvent* event) {
    if (!watched->isWidgetType()) {
        return false;
    }
    if (event->type() == QEvent::Polish) {
        // A wheel turned over a control must not give it the focus, or the value would change
        // after all (combo boxes take the focus from the wheel by default).
        auto* w = static_cast<QWidget*>(watched);
        if (valueControl(w) == w && w->focusPolicy() == Qt::WheelFocus) {
            w->setFocusPolicy(Qt::StrongFocus);
        }
        return false;
    }
    if (event->type() != QEvent::Wheel) {
        return false;
    }
    QWidget* control = valueControl(static_cast<QWidget*>(watched));
    if (control == nullptr || control->hasFocus()) {
        return false;
    }
    // Handed to the nearest page or list that scrolls: Qt passes a wheel event on to the
    // parents only when it came from the device, not when a filter sends it again.
    for (QWidget* w = control->parentWidget(); w != nullptr; w = w->parentWidget()) {
        if (auto* area = qobject_cast<QAbstractScrollArea*>(w)) {
            QCoreApplication::sendEvent(area->viewport(), event);
            break;
        }
    }
    return true;
}

} // namespace tarvik
