#include "core/cleanup/cleanable_item.h"

#include <limits>

namespace tarvik {

QString CleanableItem::name() const {
    QString p = path;
    while (p.size() > 1 && p.endsWith(QLatin1Char('/'))) {
        p.chop(1);
    }
    return p.section(QLatin1Char('/'), -1);
}

QDateTime CleanableItem::modifiedOrDistantPast() const {
    return modified.value_or(
        QDateTime::fromMSecsSinceEpoch(std::numeric_limits<qint64>::min() / 2));
}

} // namespace tarvik
