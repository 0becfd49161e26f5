#pragma once

#include "dock/app_folder.h"

#include <QImage>
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

// The folder's icon: a rounded plate with its first nine apps' icons on a 3 × 3 grid, in grid
// order; fewer apps leave cells empty. Drawn without a window, from any thread.
class FolderIconRenderer {
public:
    enum class Style { Regular, Small };

    // The apps' icons, read once at the largest size the set needs.
    explicit FolderIconRenderer(const AppFolder& folder, Style style = Style::Regular);
    QImage image(int pixels) const;

private:
    std::vector<QImage> icons_; // null where an app has no icon
    Style style_;
};

} // namespace tarvik
