#include "folder-helper/folder_icon_renderer.h"

#include "core/sys/desktop_apps.h"
#include "folder-helper/app_icon_files.h"

#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QPainter>
#include <QPainterPath>
#include <QSaveFile>
#include <algorithm>

namespace tarvik {
namespace {

constexpr int kLargestCell = 300; // a cell of the 1024-pixel icon

QString iconName(const AppEntry& app) {
    const auto found = DesktopApps::find(app.reference());
    return found ? found->icon : QString();
}

} // namespace

FolderIconRenderer::FolderIconRenderer(const AppFolder& folder, Style style) : style_(style) {
    const std::size_t shown = std::min<std::size_t>(folder.apps.size(), kFolderIconApps);
    icons_.reserve(shown);
    for (std::size_t i = 0; i < shown; ++i) {
        icons_.push_back(AppIconFiles::load(iconName(folder.apps[i]), kLargestCell));
    }
}

QImage FolderIconRenderer::image(int pixels) const {
    QImage out(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::transparent);
    QPainter p(&out);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);

    // The plate fills most of the square, as app icons do, so the folder sits in line with them.
    const qreal margin = pixels * (style_ == Style::Small ? 0.10 : 0.06);
    const QRectF plate(margin, margin, pixels - 2 * margin, pixels - 2 * margin);
    const qreal radius = plate.width() * 0.22;
    QPainterPath path;
    path.addRoundedRect(plate, radius, radius);
    p.fillPath(path, QColor(236, 238, 242, 225));
    p.setPen(QPen(QColor(0, 0, 0, 40), std::max(1.0, pixels / 128.0)));
    p.drawPath(path);

    const qreal pad = plate.width() * 0.09;
    const qreal gap = plate.width() * 0.045;
    const qreal cell = (plate.width() - 2 * pad - 2 * gap) / 3;
    for (std::size_t i = 0; i < icons_.size(); ++i) {
        const int row = static_cast<int>(i) / 3;
        const int column = static_cast<int>(i) % 3;
        const QRectF target(plate.left() + pad + column * (cell + gap),
                            plate.top() + pad + row * (cell + gap), cell, cell);
        if (icons_[i].isNull()) {
            // An app without an icon still takes its place on the grid.
            p.setPen(Qt::NoPen);
            p.setBrush(QColor(150, 156, 168, 200));
            p.drawRoundedRect(target.adjusted(cell * 0.08, cell * 0.08, -cell * 0.08, -cell * 0.08),
                              cell * 0.2, cell * 0.2);
            continue;
        }
        p.drawImage(target, icons_[i]);
    }
    return out;
}

bool FolderIconRenderer::writeIconSet(const QString& theme, const QString& name,
                                      QString* error) const {
    for (const FolderIconSize& size : folderIconSizes()) {
        const QString path = folderIconPath(theme, size, name);
        QSaveFile f(path);
        QImageWriter writer(&f, "png");
        // Light compression: the plate is mostly flat, so the files barely grow.
        writer.setQuality(85);
        if (!QDir().mkpath(QFileInfo(path).path()) || !f.open(QIODevice::WriteOnly) ||
            !writer.write(image(size.pixels)) || !f.commit()) {
            *error = QStringLiteral("Couldn't write the icon %1: %2.")
                         .arg(path, f.error() != QFileDevice::NoError ? f.errorString()
                                                                      : writer.errorString());
            return false;
        }
    }
    return true;
}

} // namespace tarvik
