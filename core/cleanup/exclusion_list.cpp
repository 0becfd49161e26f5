#include "core/cleanup/exclusion_list.h"

#include "core/cleanup/safety_guard.h"
#include "core/sys/file_paths.h"

#include <QDir>
#include <algorithm>

namespace tarvik {
namespace {

// Where the path really is: every link followed when it exists, else its parents resolved.
QString resolved(const QString& path) {
    return filePath::resolved(path).value_or(SafetyGuard::canonical(path));
}

} // namespace

ExclusionList::ExclusionList(const QStringList& paths, const QString& home) {
    for (QString p : paths) {
        if (p == QLatin1String("~") || p.startsWith(QLatin1String("~/"))) {
            p = home + p.mid(1);
        }
        if (p.isEmpty()) {
            continue;
        }
        paths_ << QDir::cleanPath(QDir::isAbsolutePath(p) ? p : QDir(home).absoluteFilePath(p));
        resolved_ << resolved(paths_.back());
    }
}

ExclusionList ExclusionList::unknown(const QString& home, QString why) {
    ExclusionList list({}, home);
    list.error_ = std::move(why);
    return list;
}

QStringList ExclusionList::forMatching() const {
    QStringList all = paths_;
    for (const QString& r : resolved_) {
        if (!all.contains(r)) {
            all << r;
        }
    }
    return all;
}

bool ExclusionList::contains(const QString& path) const {
    const QString p = QDir::cleanPath(path);
    const auto match = [&p](const QString& e) {
        return filePath::isWithin(p, e);
    };
    return std::any_of(paths_.begin(), paths_.end(), match) ||
           std::any_of(resolved_.begin(), resolved_.end(), match);
}

QStringList ExclusionList::inside(const QString& folder) const {
    QStringList out;
    for (const QString& e : forMatching()) {
        if (e != folder && filePath::isWithin(e, folder)) {
            out << e;
        }
    }
    return out;
}

std::vector<CleanableItem> ExclusionList::filter(std::vector<CleanableItem> items) const {
    if (paths_.isEmpty()) {
        return items;
    }
    std::erase_if(items, [this](const CleanableItem& item) { return contains(item); });
    return items;
}

} // namespace tarvik
