#include "app/shell/reading_glyphs.h"

#include <QPainter>
#include <QPainterPathStroker>
#include <QPixmap>
#include <QTransform>

namespace tarvik {
namespace {

// Glyphs are drawn on a 16-unit grid; strokes are thick enough to survive 8 px.
constexpr double kGrid = 16.0;
constexpr double kStroke = 1.8;

QPainterPath line(QPointF a, QPointF b) {
    QPainterPath p(a);
    p.lineTo(b);
    return p;
}

QPainterPath polyline(std::initializer_list<QPointF> points) {
    QPainterPath p(*points.begin());
    for (auto it = points.begin() + 1; it != points.end(); ++it) {
        p.lineTo(*it);
    }
    return p;
}

QPainterPath box(const QRectF& r, double radius = 1.2) {
    QPainterPath p;
    p.addRoundedRect(r, radius, radius);
    return p;
}

// The glyph as lines to stroke and shapes to fill, on the grid.
std::pair<QPainterPath, QPainterPath> parts(MenuBarStat stat) {
    QPainterPath strokes;
    QPainterPath fills;
    switch (stat) {
    case MenuBarStat::Cpu:
        strokes.addPath(box({3.5, 3.5, 9, 9}));
        fills.addRect(6.3, 6.3, 3.4, 3.4);
        for (double at : {6.0, 10.0}) {
            strokes.addPath(line({0.8, at}, {3.5, at}));
            strokes.addPath(line({12.5, at}, {15.2, at}));
            strokes.addPath(line({at, 0.8}, {at, 3.5}));
            strokes.addPath(line({at, 12.5}, {at, 15.2}));
        }
        break;
    case MenuBarStat::Memory:
        strokes.addPath(box({1, 3, 14, 7.5}));
        fills.addRect(3.4, 5.4, 2.4, 2.7);
        fills.addRect(6.8, 5.4, 2.4, 2.7);
        fills.addRect(10.2, 5.4, 2.4, 2.7);
        for (double at : {3.0, 5.8, 10.2, 13.0}) { // the gap is the stick's notch
            strokes.addPath(line({at, 10.5}, {at, 14}));
        }
        break;
    case MenuBarStat::Download:
        strokes.addPath(line({8, 1}, {8, 10.5}));
        strokes.addPath(polyline({{3.5, 6.5}, {8, 11}, {12.5, 6.5}}));
        strokes.addPath(line({2, 14.5}, {14, 14.5}));
        break;
    case MenuBarStat::Upload:
        strokes.addPath(line({8, 11}, {8, 1.8}));
        strokes.addPath(polyline({{3.5, 6}, {8, 1.5}, {12.5, 6}}));
        strokes.addPath(line({2, 14.5}, {14, 14.5}));
        break;
    case MenuBarStat::Gpu:
        strokes.addPath(box({1, 3, 14, 9}));
        strokes.addEllipse(QPointF(6, 7.5), 2.2, 2.2);
        fills.addRect(10.2, 5.2, 2.4, 4.6);
        strokes.addPath(line({3.5, 12}, {3.5, 14.5}));
        strokes.addPath(line({12.5, 12}, {12.5, 14.5}));
        break;
    case MenuBarStat::Battery:
        strokes.addPath(box({1, 4, 12, 8}));
        fills.addRect(13.2, 6.2, 2, 3.6);
        fills.addRect(3.3, 6.3, 5, 3.4);
        break;
    case MenuBarStat::Agent: {
        QPainterPath star(QPointF(8, 0.5));
        star.quadTo(8.9, 7.1, 15.5, 8);
        star.quadTo(8.9, 8.9, 8, 15.5);
        star.quadTo(7.1, 8.9, 0.5, 8);
        star.quadTo(7.1, 7.1, 8, 0.5);
        fills.addPath(star);
        break;
    }
    }
    return {strokes, fills};
}

} // namespace

QPainterPath readingGlyph(MenuBarStat stat, const QRectF& target) {
    const auto [strokes, fills] = parts(stat);
    QPainterPathStroker stroker;
    stroker.setWidth(kStroke);
    stroker.setCapStyle(Qt::FlatCap);
    stroker.setJoinStyle(Qt::MiterJoin);
    QPainterPath outline = stroker.createStroke(strokes).united(fills);
    const double side = std::min(target.width(), target.height());
    QTransform t;
    t.translate(target.center().x() - side / 2, target.center().y() - side / 2);
    t.scale(side / kGrid, side / kGrid);
    return t.map(outline);
}

} // namespace tarvik
