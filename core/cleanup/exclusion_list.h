#pragma once

#include "core/cleanup/cleanable_item.h"

#include <QStringList>
#include <optional>
#include <vector>

namespace tarvik {

// Locations no scan may offer and no removal may touch, from the preference "exclusions".
class ExclusionList {
public:
    // A leading "~" stands for `home`; every path is made absolute and standardised, and is also
    // kept where it really is (links followed), so an exclusion spelled through a link still
    // matches what a walk finds.
    ExclusionList() = default;
    ExclusionList(const QStringList& paths, const QString& home);
    // A list that could not be read, and why: a removal must then stop rather than treat the
    // list as empty.
    static ExclusionList unknown(const QString& home, QString why);

    // As the user named them, standardised.
    const QStringList& paths() const { return paths_; }
    // Both spellings of each: what walks and scans compare their paths with.
    QStringList forMatching() const;
    const std::optional<QString>& error() const { return error_; }

    bool contains(const QString& path) const;
    bool contains(const CleanableItem& item) const { return contains(item.path); }
    // The exclusions that lie strictly inside `folder`, in both spellings.
    QStringList inside(const QString& folder) const;
    std::vector<CleanableItem> filter(std::vector<CleanableItem> items) const;

private:
    QStringList paths_;
    QStringList resolved_;
    std::optional<QString> error_;
};

} // namespace tarvik
