#include "dock/folder_icon_sizes.h"

namespace tarvik {

QString FolderIconSize::themeFolder() const {
    QString folder = QStringLiteral("%1x%1").arg(logical);
    return scale == 1 ? folder : folder + QStringLiteral("@%1").arg(scale);
}

const std::vector<FolderIconSize>& folderIconSizes() {
    static const std::vector<FolderIconSize> sizes{
        {"icp4", 16, 16, 1},   {"icp5", 32, 32, 1},    {"ic11", 32, 16, 2},   {"ic12", 64, 32, 2},
        {"ic07", 128, 128, 1}, {"ic13", 256, 128, 2},  {"ic08", 256, 256, 1}, {"ic14", 512, 256, 2},
        {"ic09", 512, 512, 1}, {"ic10", 1024, 512, 2},
    };
    return sizes;
}

QString folderIconPath(const QString& theme, const FolderIconSize& size, const QString& name) {
    return theme + QLatin1Char('/') + size.themeFolder() + QStringLiteral("/apps/") + name +
           QStringLiteral(".png");
}

} // namespace tarvik
