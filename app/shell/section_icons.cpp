#include "app/shell/section_icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace tarvik {
namespace {

QString resourceOf(std::string_view symbol) {
    return QStringLiteral(":/symbols/%1.svg")
        .arg(QString::fromUtf8(symbol.data(), static_cast<int>(symbol.size())));
}

// Draws one symbol in the colour its mode asks for, read from the palette at drawing time so
// a switch between light and dark repaints every icon in the new colour.
class SymbolEngine : public QIconEngine {
public:
    SymbolEngine(QString name, QByteArray svg, std::optional<QColor> tint, QString badge)
        : name_(std::move(name)), svg_(std::move(svg)), tint_(tint), badge_(std::move(badge)) {}

    // Through the pixmap cache: a view repaints its rows' icons often, and the SVG is parsed
    // only once per size and ink.
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const int side = std::min(rect.width(), rect.height());
        const QRect square(rect.x() + (rect.width() - side) / 2,
                           rect.y() + (rect.height() - side) / 2, side, side);
        const qreal ratio =
            painter->device() != nullptr ? painter->device()->devicePixelRatioF() : 1;
        QPixmap pm = pixmap(square.size() * ratio, mode, state);
        pm.setDevicePixelRatio(ratio);
        painter->drawPixmap(square, pm);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        const QString key = QStringLiteral("tarvik-symbol:%1:%2x%3:%4")
                                .arg(name_)
                                .arg(size.width())
                                .arg(size.height())
                                .arg(colour(mode).rgba());
        QPixmap pm;
        if (QPixmapCache::find(key, &pm)) {
            return pm;
        }
        pm = QPixmap(size);
        pm.fill(Qt::transparent);
        {
            QPainter p(&pm);
            p.setRenderHint(QPainter::Antialiasing);
            draw(p, QRect(QPoint(0, 0), size), colour(mode));
        }
        QPixmapCache::insert(key, pm);
        return pm;
    }

    QIconEngine* clone() const override { return new SymbolEngine(*this); }
    QString key() const override { return QStringLiteral("tarvik-symbol"); }
    QString iconName() override { return name_; }

private:
    void draw(QPainter& painter, const QRect& square, const QColor& ink) const {
        if (svg_.isEmpty()) {
            drawBadge(painter, square, ink);
            return;
        }
        QByteArray inked = svg_;
        // SVG Tiny reads #rrggbb only; the palette's inks are opaque.
        inked.replace("currentColor", ink.name(QColor::HexRgb).toLatin1());
        QSvgRenderer(inked).render(&painter, square);
    }

    QColor colour(QIcon::Mode mode) const {
        const QPalette palette = QGuiApplication::palette();
        switch (mode) {
        case QIcon::Disabled:
            return palette.color(QPalette::Disabled, QPalette::WindowText);
        case QIcon::Selected:
            return palette.color(QPalette::Active, QPalette::HighlightedText);
        case QIcon::Normal:
        case QIcon::Active:
            break;
        }
        return tint_.value_or(palette.color(QPalette::Active, QPalette::WindowText));
    }

    void drawBadge(QPainter& p, const QRect& r, const QColor& ink) const {
        p.save();
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(QPen(ink, std::max(1.0, r.width() / 14.0)));
        p.drawEllipse(QRectF(r).adjusted(1, 1, -1, -1));
        QFont f = p.font();
        f.setPixelSize(std::max(6, r.height() * 5 / 9));
        f.setBold(true);
        p.setFont(f);
        p.drawText(r, Qt::AlignCenter, badge_.left(1));
        p.restore();
    }

    QString name_;
    QByteArray svg_;
    std::optional<QColor> tint_;
    QString badge_;
};

} // namespace

bool hasSymbol(std::string_view symbol) {
    return QFile::exists(resourceOf(symbol));
}

QIcon symbolIcon(std::string_view symbol, const QString& badge, std::optional<QColor> tint) {
    // Each symbol's file is read once; views ask for their rows' icons again and again.
    static QHash<QString, QByteArray> read;
    const QString name = resourceOf(symbol);
    auto it = read.find(name);
    if (it == read.end()) {
        QFile file(name);
        it = read.insert(name, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
    }
    const QByteArray& svg = *it;
    return QIcon(new SymbolEngine(QString::fromUtf8(symbol.data(), static_cast<int>(symbol.size())),
                                  svg, tint, badge));
}

QIcon sectionIcon(AppSection section) {
    const SectionInfo& s = info(section);
    return symbolIcon(s.symbol, QString::fromUtf8(s.title.data(), 1));
}

QIcon appIcon() {
    // One icon for the life of the program: the tray draws it on every reading, and each new
    // QIcon renders its pixmaps again into the pixmap cache under keys of its own, which filled
    // the cache (10 MB) with copies no one asks for again. Never freed, so it can't outlive the
    // icon plugin that draws it.
    static const QIcon* const icon = [] {
        QIcon themed = QIcon::fromTheme(QStringLiteral("org.pellor.tarvik"));
        return new QIcon(themed.isNull() ? QIcon(QStringLiteral(":/icons/org.pellor.tarvik.svg"))
                                         : themed);
    }();
    return *icon;
}

} // namespace tarvik
