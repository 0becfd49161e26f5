#pragma once

#include "dock/app_folder.h"
#include "dock/folder_icon_sizes.h"

#include <QImage>
#include <vector>

namespace tarvik {

// The folder's icon: a rounded plate with its first nine apps' icons on a 3 × 3 grid, in grid
// order; fewer apps leave cells empty. Drawn without a window, from any thread.
class FolderIconRenderer {
public:
    enum class Style { Regular, Small };

    // The apps' icons, read once at the largest size the set needs.
    explicit FolderIconRenderer(const AppFolder& folder, Style style = Style::Regular);
    QImage image(int pixels) const;
    // Every size of the icon set as `name`.png below the icon theme folder `theme`, each written
    // beside its place and renamed into it. False with `error` set when one wasn't written.
    bool writeIconSet(const QString& theme, const QString& name, QString* error) const;

private:
    std::vector<QImage> icons_; // null where an app has no icon
    Style style_;
};

} // namespace tarvik
