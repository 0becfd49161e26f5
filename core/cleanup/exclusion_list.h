#pragma once

#include "core/cleanup/cleanable_item.h"

#include <QStringList>
#include <vector>

namespace tarvik {

class Preferences;

// Locations no scan may offer, from the preference "exclusions".
class ExclusionList {
public:
    // A leading "~" stands for `home`; every path is made absolute and standardised.
    ExclusionList(const QStringList& paths, const QString& home);
    static ExclusionList load(const Preferences& preferences, const QString& home);

    const QStringList& paths() const { return paths_; }
    bool contains(const QString& path) const;
    bool contains(const CleanableItem& item) const { return contains(item.path); }
    std::vector<CleanableItem> filter(std::vector<CleanableItem> items) const;

private:
    QStringList paths_;
};

} // namespace tarvik
