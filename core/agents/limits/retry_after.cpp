#include "core/agents/limits/retry_after.h"

#include <QLocale>
#include <algorithm>

namespace tarvik {

std::optional<double> retryAfterSeconds(const QString& value, const QDateTime& now) {
    const QString trimmed = value.trimmed();
    bool number = false;
    const double seconds = trimmed.toDouble(&number);
    if (number) {
        return std::max(seconds, 0.0);
    }
    // The date always names GMT; the parse is pinned to English names and UTC.
    QString text = trimmed;
    if (!text.endsWith(QLatin1String(" GMT"))) {
        return std::nullopt;
    }
    text.chop(4);
    QDateTime when = QLocale::c().toDateTime(text, QStringLiteral("ddd, dd MMM yyyy HH:mm:ss"));
    if (!when.isValid()) {
        return std::nullopt;
    }
    when.setTimeSpec(Qt::UTC);
    return std::max(static_cast<double>(now.msecsTo(when)) / 1000.0, 0.0);
}

} // namespace tarvik
