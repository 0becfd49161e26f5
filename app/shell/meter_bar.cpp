#include "app/shell/meter_bar.h"

#include "app/shell/theme.h"

#include <QPainter>
#include <algorithm>

namespace tarvik {

MeterBar::MeterBar(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize MeterBar::sizeHint() const {
    return {120, 6};
}

void MeterBar::setFraction(std::optional<double> fraction) {
    if (fraction) {
        fraction = std::clamp(*fraction, 0.0, 1.0);
    }
    if (fraction != fraction_) {
        fraction_ = fraction;
        update();
    }
}

void MeterBar::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    const QRectF track(0, 0, width(), height());
    const double radius = height() / 2.0;
    p.setBrush(palette().color(QPalette::Midlight));
    p.drawRoundedRect(track, radius, radius);
    if (fraction_ && *fraction_ > 0) {
        QRectF fill = track;
        fill.setWidth(std::max(track.height(), track.width() * *fraction_));
        p.setBrush(meaningColor(meaningOfFraction(*fraction_)));
        p.drawRoundedRect(fill, radius, radius);
    }
}

} // namespace tarvik
