#include "core/text/counts.h"

#include <QLocale>

namespace tarvik {

QString countOf(std::int64_t n, QStringView one, QStringView many) {
    QString text = QLocale().toString(static_cast<qlonglong>(n));
    text += QLatin1Char(' ');
    text += n == 1 ? one : many;
    return text;
}

} // namespace tarvik
