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

FileSnapshot FileSnapshot::of(const struct statx& sx) {
    FileSnapshot s{sx.stx_ino, static_cast<std::int64_t>(sx.stx_size), kUndated};
    if ((sx.stx_mask & STATX_MTIME) != 0) {
        s.modifiedNs = sx.stx_mtime.tv_sec * 1'000'000'000LL + sx.stx_mtime.tv_nsec;
    }
    return s;
}

} // namespace tarvik
