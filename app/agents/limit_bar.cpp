#include "app/agents/limit_bar.h"

#include "app/shell/theme.h"

#include <QPainter>
#include <QPalette>
#include <algorithm>

namespace tarvik {
namespace {

// Colours carry meaning only: calm, watch, over.
QColor usedColor(double used) {
    if (used >= 1.0) {
        return meaningColor(Meaning::Critical);
    }
    return meaningColor(used >= 0.8 ? Meaning::Watch : Meaning::Good);
}

} // namespace

LimitBar::LimitBar(QWidget* parent) : QWidget(parent) {
    setMinimumHeight(10);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void LimitBar::setValues(double used, std::optional<double> evenPace) {
    used_ = used;
    pace_ = evenPace;
    update();
}

void LimitBar::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(0.5, 1.5, -0.5, -1.5);
    const double radius = area.height() / 2;
    p.setPen(Qt::NoPen);
    p.setBrush(palette().color(QPalette::Midlight));
    p.drawRoundedRect(area, radius, radius);
    const double fill = std::clamp(used_, 0.0, 1.0);
    if (fill > 0) {
        p.setBrush(usedColor(used_));
        p.drawRoundedRect(QRectF(area.left(), area.top(), area.width() * fill, area.height()),
                          radius, radius);
    }
    if (pace_) {
        const double x = area.left() + area.width() * std::clamp(*pace_, 0.0, 1.0);
        p.setPen(QPen(palette().color(QPalette::WindowText), 2));
        p.drawLine(QPointF(x, rect().top()), QPointF(x, rect().bottom()));
    }
}

} // namespace tarvik
