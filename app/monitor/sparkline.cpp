#include "app/monitor/sparkline.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace tarvik {

Sparkline::Sparkline(QWidget* parent) : QWidget(parent) {
    setMinimumHeight(28);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Sparkline::setValues(std::vector<double> values) {
    values_ = std::move(values);
    update();
}

void Sparkline::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(1, 1, -1, -1);
    const QColor line = color_.isValid() ? color_ : palette().color(QPalette::Highlight);
    QColor fill = line;
    fill.setAlphaF(0.18);
    QColor frame = palette().color(QPalette::Mid);
    frame.setAlphaF(0.5);
    p.setPen(QPen(frame, 1));
    p.drawRoundedRect(area, 3, 3);
    if (values_.size() < 2) {
        return;
    }
    double top = 1.0;
    if (autoScale_) {
        top = std::max(1.0, *std::max_element(values_.begin(), values_.end()));
    }
    // The newest value sits at the right edge; a short history leaves the left side empty.
    constexpr std::size_t kSlots = 90;
    const double step = area.width() / static_cast<double>(kSlots - 1);
    const double x0 = area.right() - step * static_cast<double>(values_.size() - 1);
    QPainterPath path;
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const double v = std::clamp(values_[i] / top, 0.0, 1.0);
        const QPointF pt(x0 + step * static_cast<double>(i),
                         area.bottom() - v * (area.height() - 2));
        if (i == 0) {
            path.moveTo(pt);
        } else {
            path.lineTo(pt);
        }
    }
    QPainterPath filled = path;
    filled.lineTo(area.right(), area.bottom());
    filled.lineTo(x0, area.bottom());
    filled.closeSubpath();
    p.fillPath(filled, fill);
    p.setPen(QPen(line, 1.5));
    p.drawPath(path);
}

} // namespace tarvik
