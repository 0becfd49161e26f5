#include "app/agents/limit_bar.h"

#include <QPainter>
#include <QPalette>
#include <algorithm>

namespace tarvik {
namespace {

// Colours carry meaning only: calm, watch, over.
QColor usedColor(double used) {
    if (used >= 1.0) {
        return QColor(0xd0, 0x45, 0x3a);
    }
    if (used >= 0.8) {
        return QColor(0xd3, 0x8b, 0x12);
    }
    return QColor(0x2e, 0x9d, 0x5b);
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
    p.setBrush(palette().color(QPalette::Mid));
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

DailySpendChart::DailySpendChart(QWidget* parent) : QWidget(parent) {
    setMinimumHeight(70);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void DailySpendChart::setValues(std::vector<std::pair<QString, double>> days) {
    days_ = std::move(days);
    update();
}

void DailySpendChart::paintEvent(QPaintEvent*) {
    if (days_.empty()) {
        return;
    }
    QPainter p(this);
    const double top = std::max(
        0.01, std::max_element(days_.begin(), days_.end(), [](const auto& a, const auto& b) {
                  return a.second < b.second;
              })->second);
    const int labelHeight = fontMetrics().height();
    const QRectF area = QRectF(rect()).adjusted(0, 2, 0, -labelHeight - 2);
    const double slot = area.width() / static_cast<double>(days_.size());
    p.setPen(Qt::NoPen);
    p.setBrush(palette().color(QPalette::Highlight));
    for (std::size_t i = 0; i < days_.size(); ++i) {
        const double h = area.height() * days_[i].second / top;
        const double w = std::min(slot * 0.7, 28.0);
        p.drawRect(QRectF(area.left() + slot * static_cast<double>(i) + (slot - w) / 2,
                          area.bottom() - h, w, h));
    }
    // The first and last day name the range.
    p.setPen(palette().color(QPalette::PlaceholderText));
    p.drawText(QRectF(0, area.bottom() + 2, width() / 2.0, labelHeight), Qt::AlignLeft,
               days_.front().first);
    if (days_.size() > 1) {
        p.drawText(QRectF(width() / 2.0, area.bottom() + 2, width() / 2.0, labelHeight),
                   Qt::AlignRight, days_.back().first);
    }
}

} // namespace tarvik
