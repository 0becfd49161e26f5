// Renders the app icon's SVG to the PNG sizes of the hicolor theme at build time, so the
// SVG stays the only source of the icon.
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 4) {
        std::fprintf(stderr, "usage: render_icon SVG PNG SIZE\n");
        return 2;
    }
    const int size = QString::fromLocal8Bit(argv[3]).toInt();
    QSvgRenderer svg(QString::fromLocal8Bit(argv[1]));
    if (!svg.isValid() || size <= 0) {
        std::fprintf(stderr, "render_icon: cannot render %s at %s\n", argv[1], argv[3]);
        return 1;
    }
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
    painter.end();
    return image.save(QString::fromLocal8Bit(argv[2]), "PNG") ? 0 : 1;
}
