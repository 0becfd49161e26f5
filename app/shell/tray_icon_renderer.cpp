#include "app/shell/tray_icon_renderer.h"

#include <QFont>
#include <QPainter>
#include <QPainterPath>

namespace tarvik {
namespace {

QColor barColor(double fraction) {
    if (fraction >= 0.9) {
        return QColor(0xe0, 0x52, 0x45);
    }
    if (fraction >= 0.7) {
        return QColor(0xf0, 0xa0, 0x20);
    }
    return QColor(0x3c, 0xc0, 0x78);
}

// The figure without its unit sign: "23%" becomes "23" so two digits fill the icon.
QString iconText(const MenuBarReading& r) {
    QString t = r.compact;
    if (t.endsWith(QLatin1Char('%'))) {
        t.chop(1);
    }
    return t;
}

void drawOutlinedText(QPainter& p, const QRectF& box, const QString& text) {
    QFont f = p.font();
    f.setBold(true);
    f.setPixelSize(static_cast<int>(box.height() * 0.92));
    // Shrink wide figures ("1.2M") until they fit the box.
    for (int i = 0; i < 12; ++i) {
        if (QFontMetricsF(f).horizontalAdvance(text) <= box.width() * 0.98) {
            break;
        }
        f.setPixelSize(std::max(6, f.pixelSize() * 9 / 10));
    }
    const QFontMetricsF fm(f);
    const double x = box.center().x() - fm.horizontalAdvance(text) / 2.0;
    const double y = box.center().y() + (fm.ascent() - fm.descent()) / 2.0;
    QPainterPath path;
    path.addText(QPointF(x, y), f, text);
    p.setPen(
        QPen(QColor(0, 0, 0, 200), box.height() / 7.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawPath(path);
    p.fillPath(path, Qt::white);
}

} // namespace

QImage renderTrayReadings(const std::vector<MenuBarReading>& readings, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    if (readings.empty()) {
        return image;
    }
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const double s = size;
    if (readings.size() <= 2) {
        const double rowHeight = s / static_cast<double>(readings.size());
        for (std::size_t i = 0; i < readings.size(); ++i) {
            drawOutlinedText(p, QRectF(0, rowHeight * static_cast<double>(i), s, rowHeight),
                             iconText(readings[i]));
        }
        return image;
    }
    // Bars, one per reading, filling from the bottom; a reading the machine cannot give is an
    // empty, dashed slot.
    const double gap = s / 16.0;
    const double width =
        (s - gap * static_cast<double>(readings.size() + 1)) / static_cast<double>(readings.size());
    for (std::size_t i = 0; i < readings.size(); ++i) {
        const QRectF slot(gap + (width + gap) * static_cast<double>(i), gap, width, s - 2 * gap);
        p.setPen(QPen(QColor(0, 0, 0, 170), s / 24.0));
        p.setBrush(QColor(255, 255, 255, 60));
        p.drawRoundedRect(slot, s / 20.0, s / 20.0);
        if (!readings[i].fraction) {
            p.setPen(QPen(Qt::white, s / 16.0, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(QPointF(slot.left() + width * 0.25, slot.center().y()),
                       QPointF(slot.right() - width * 0.25, slot.center().y()));
            continue;
        }
        const double f = std::clamp(*readings[i].fraction, 0.0, 1.0);
        const QRectF fill(slot.left(), slot.bottom() - slot.height() * std::max(f, 0.04),
                          slot.width(), slot.height() * std::max(f, 0.04));
        p.setPen(Qt::NoPen);
        p.setBrush(barColor(f));
        p.drawRoundedRect(fill, s / 20.0, s / 20.0);
    }
    return image;
}

QIcon trayReadingsIcon(const std::vector<MenuBarReading>& readings) {
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64}) {
        icon.addPixmap(QPixmap::fromImage(renderTrayReadings(readings, size)));
    }
    return icon;
}

QString trayTooltip(const std::vector<MenuBarReading>& readings) {
    QString tip = QStringLiteral("Tarvik");
    for (const auto& r : readings) {
        tip += QLatin1Char('\n') + r.words;
    }
    return tip;
}

} // namespace tarvik
