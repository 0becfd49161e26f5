#include "core/cleanup/exclusion_list.h"

#include "core/shell/preferences.h"

#include <QDir>
#include <algorithm>

namespace tarvik {

ExclusionList::ExclusionList(const QStringList& paths, const QString& home) {
    for (QString p : paths) {
        if (p == QLatin1String("~") || p.startsWith(QLatin1String("~/"))) {
            p = home + p.mid(1);
        }
        if (p.isEmpty()) {
            continue;
        }
        paths_ << QDir::cleanPath(QDir::isAbsolutePath(p) ? p : QDir(home).absoluteFilePath(p));
    }
}

ExclusionList ExclusionList::load(const Preferences& preferences, const QString& home) {
    return ExclusionList(preferences.exclusions(), home);
}

bool ExclusionList::contains(const QString& path) const {
    const QString p = QDir::cleanPath(path);
    return std::any_of(paths_.begin(), paths_.end(), [&p](const QString& e) {
        return p == e || p.startsWith(e.endsWith('/') ? e : e + QLatin1Char('/'));
    });
}

std::vector<CleanableItem> ExclusionList::filter(std::vector<CleanableItem> items) const {
    if (paths_.isEmpty()) {
        return items;
    }
    std::erase_if(items, [this](const CleanableItem& item) { return contains(item); });
    return items;
}

} // namespace tarvik
