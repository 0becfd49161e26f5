#include "app/shell/tray_icon_renderer.h"

#include "app/shell/reading_glyphs.h"
#include "app/shell/section_icons.h"
#include "app/shell/theme.h"

#include <QFont>
#include <QFontMetricsF>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace tarvik {
namespace {

const QColor kInk(Qt::white);
const QColor kHalo(0, 0, 0, 190);

// The figure without its percent sign: "23%" becomes "23" so two digits fill their box.
QString figureText(const MenuBarReading& r) {
    QString t = r.compact;
    if (t.endsWith(QLatin1Char('%'))) {
        t.chop(1);
    }
    return t;
}

// Ink with a halo around it, as thick as the shape's box allows.
void drawInked(QPainter& p, const QPainterPath& shape, double boxHeight) {
    p.setPen(
        QPen(kHalo, std::max(1.0, boxHeight / 8.0), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawPath(shape);
    p.fillPath(shape, kInk);
}

QPainterPath figurePath(const QRectF& box, const QString& text) {
    QFont f;
    f.setBold(true);
    f.setPixelSize(std::max(4, static_cast<int>(box.height() * 0.95)));
    // Wide figures ("100", "1.2M") shrink until they fit.
    while (f.pixelSize() > 4 && QFontMetricsF(f).tightBoundingRect(text).width() > box.width()) {
        f.setPixelSize(f.pixelSize() - 1);
    }
    const QRectF tight = QFontMetricsF(f).tightBoundingRect(text);
    QPainterPath path;
    path.addText(
        QPointF(box.center().x() - tight.center().x(), box.center().y() - tight.center().y()), f,
        text);
    return path;
}

void drawBar(QPainter& p, const QRectF& slot, const MenuBarReading& r) {
    const double radius = slot.height() / 2.0;
    p.setPen(QPen(kHalo, std::max(1.0, slot.height() / 5.0)));
    p.setBrush(QColor(255, 255, 255, 70));
    p.drawRoundedRect(slot, radius, radius);
    if (!r.fraction) {
        return; // the machine can't give it: an empty bar, never a made-up level
    }
    const double f = std::clamp(*r.fraction, 0.0, 1.0);
    const QColor meaning = meaningColor(level(r.stat, f));
    p.setPen(Qt::NoPen);
    p.setBrush(meaning.isValid() ? meaning : kInk);
    p.drawRoundedRect(
        QRectF(slot.left(), slot.top(), std::max(slot.height(), slot.width() * f), slot.height()),
        radius, radius);
}

// The tray icon of one moment's readings, drawn at the size a tray asks for when it asks. An
// icon of added pixmaps keeps every pixmap it hands out in the pixmap cache, and with a new icon
// for each reading the icons of past readings stayed there until the cache was full.
class TrayIconEngine : public QIconEngine {
public:
    explicit TrayIconEngine(TrayIconContent content) : content_(std::move(content)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const int side = std::min(rect.width(), rect.height());
        const qreal ratio =
            painter->device() != nullptr ? painter->device()->devicePixelRatioF() : 1;
        painter->drawImage(QRect(rect.x() + (rect.width() - side) / 2,
                                 rect.y() + (rect.height() - side) / 2, side, side),
                           renderTrayIcon(content_, side, ratio));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1.0);
    }
    // `size` counts device pixels.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode, QIcon::State, qreal scale) override {
        const int side = std::min(size.width(), size.height());
        return QPixmap::fromImage(
            renderTrayIcon(content_, static_cast<int>(std::lround(side / scale)), scale));
    }
    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override {
        const int side = std::min(size.width(), size.height());
        return {side, side};
    }
    // What a tray that takes the pixmaps up front (a StatusNotifierItem host) gets.
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
        return {{16, 16}, {22, 22}, {24, 24}, {32, 32}, {48, 48}, {64, 64}};
    }
    bool isNull() override { return false; }
    QString key() const override { return QStringLiteral("tarvik-tray"); }
    QIconEngine* clone() const override { return new TrayIconEngine(*this); }

private:
    TrayIconContent content_;
};

} // namespace

std::size_t maxBarRows(double size) {
    return static_cast<std::size_t>(std::clamp(size / 7.0, 2.0, 4.0));
}

TrayIconLayout layoutTrayIcon(const TrayIconContent& content, double s) {
    TrayIconLayout layout;
    const std::size_t count = content.readings.size();
    if (count == 0) {
        layout.symbol = QRectF(0, 0, s, s);
        return layout;
    }
    // A row: the glyph in a square at its left, the figure or bar in the rest.
    auto row = [&layout](std::size_t reading, double top, double height, double width, bool bar) {
        const double glyph = height * (bar ? 1.0 : 0.8);
        const QRectF rest(glyph, top, width - glyph, height);
        layout.rows.push_back(
            {reading, QRectF(0, top, glyph, height).adjusted(0.5, 0.5, -0.5, -0.5),
             bar ? rest.adjusted(height * 0.15, height * 0.25, -height * 0.05, -height * 0.25)
                 : rest,
             bar});
    };
    if (content.symbol) {
        const double h = s / 2.0;
        layout.symbol = QRectF((s - h) / 2.0, 0, h, h);
        row(0, h, h, s, false);
    } else if (count == 1) {
        const double g = s * 0.42;
        layout.rows.push_back({0, QRectF((s - g) / 2.0, 0, g, g).adjusted(0.5, 0.5, -0.5, -0.5),
                               QRectF(0, g, s, s - g), false});
    } else if (count == 2) {
        row(0, 0, s / 2.0, s, false);
        row(1, s / 2.0, s / 2.0, s, false);
    } else {
        const std::size_t n = std::min(count, maxBarRows(s));
        const double h = s / static_cast<double>(n);
        for (std::size_t i = 0; i < n; ++i) {
            row(i, h * static_cast<double>(i), h, s, true);
        }
    }
    return layout;
}

QImage renderTrayIcon(const TrayIconContent& content, int size, double devicePixelRatio) {
    if (content.readings.empty()) {
        return appIcon().pixmap(QSize(size, size), devicePixelRatio).toImage();
    }
    const int pixels = static_cast<int>(std::lround(size * devicePixelRatio));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const TrayIconLayout layout = layoutTrayIcon(content, size);
    if (layout.symbol) {
        appIcon().paint(&p, layout.symbol->toAlignedRect());
    }
    for (const auto& row : layout.rows) {
        const MenuBarReading& r = content.readings[row.reading];
        drawInked(p, readingGlyph(r.stat, row.glyph), row.glyph.height());
        if (row.bar) {
            drawBar(p, row.figure, r);
        } else {
            drawInked(p, figurePath(row.figure, figureText(r)), row.figure.height());
        }
    }
    return image;
}

QIcon trayIcon(const TrayIconContent& content) {
    if (content.readings.empty()) {
        return appIcon();
    }
    return QIcon(new TrayIconEngine(content));
}

QString trayTooltip(const std::vector<MenuBarReading>& readings) {
    QString tip = QStringLiteral("Tarvik");
    for (const auto& r : readings) {
        tip += QLatin1Char('\n') + r.words;
    }
    return tip;
}

} // namespace tarvik
