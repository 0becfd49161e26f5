#pragma once

#include <QString>
#include <vector>

namespace tarvik {

// One image of a folder's icon set: the icon-container entry it stands for, its pixel size,
// and where it goes in an icon theme ("32x32" at scale 2 is the folder "32x32@2").
struct FolderIconSize {
    const char* type;
    int pixels;
    int logical;
    int scale;
    QString themeFolder() const;
};
// The sizes of a folder's icon set, in order.
const std::vector<FolderIconSize>& folderIconSizes();

// Where the icon `name` of `size` goes below an icon theme's folder.
QString folderIconPath(const QString& theme, const FolderIconSize& size, const QString& name);

} // namespace tarvik
