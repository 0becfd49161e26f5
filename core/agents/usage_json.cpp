#include "core/agents/usage_json.h"

#include <QStringList>
#include <cmath>

namespace tarvik::UsageJSON {

std::optional<double> number(const QJsonValue& value) {
    if (value.isDouble()) {
        return value.toDouble();
    }
    if (value.isString()) {
        bool ok = false;
        const double d = value.toString().trimmed().toDouble(&ok);
        if (ok) {
            return d;
        }
    }
    return std::nullopt;
}

std::optional<QDateTime> date(const QJsonValue& value) {
    if (value.isDouble()) {
        return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(value.toDouble() * 1000.0),
                                              Qt::UTC);
    }
    if (!value.isString()) {
        return std::nullopt;
    }
    const QString text = value.toString().trimmed();
    // Qt reads ISO 8601 with or without fractional seconds and with a zone suffix.
    QDateTime d = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!d.isValid()) {
        // Fractions longer than milliseconds ("…:05.123456789Z"): cut them and try again.
        const auto dot = text.indexOf(QLatin1Char('.'));
        if (dot > 0) {
            qsizetype end = dot + 1;
            while (end < text.size() && text[end].isDigit()) {
                ++end;
            }
            d = QDateTime::fromString(text.left(dot) + text.mid(end), Qt::ISODate);
        }
    }
    if (!d.isValid()) {
        const QDate day = QDate::fromString(text, Qt::ISODate);
        if (day.isValid()) {
            d = day.startOfDay(Qt::UTC);
        }
    }
    if (!d.isValid()) {
        return std::nullopt;
    }
    return d.toUTC();
}

QString capitalized(const QString& word) {
    return word.left(1).toUpper() + word.mid(1);
}

QString title(const QString& key) {
    QStringList words;
    for (const QString& part : key.split(QLatin1Char('_'), Qt::SkipEmptyParts)) {
        if (part.compare(QLatin1String("oauth"), Qt::CaseInsensitive) == 0) {
            words << QStringLiteral("OAuth");
        } else {
            words << capitalized(part);
        }
    }
    return words.join(QLatin1Char(' '));
}

QString windowTitle(double seconds) {
    const double hours = seconds / 3600.0;
    if (hours <= 6) {
        return QStringLiteral("Session");
    }
    if (hours >= 144) {
        return QStringLiteral("Weekly");
    }
    if (hours >= 24) {
        return QStringLiteral("%1 days").arg(std::llround(hours / 24.0));
    }
    return QStringLiteral("%1-hour").arg(std::llround(hours));
}

} // namespace tarvik::UsageJSON
