#include "core/agents/limits/usage_json.h"

#include "core/agents/time_stamps.h"
#include "core/text/counts.h"

#include <QJsonDocument>
#include <QStringList>
#include <cmath>

namespace tarvik::UsageJSON {

std::optional<QJsonObject> object(const QByteArray& body) {
    const QJsonDocument doc = QJsonDocument::fromJson(body);
    return doc.isObject() ? std::optional(doc.object()) : std::nullopt;
}

std::optional<Reading> read(const QByteArray& body, AgentProvider provider, const QDateTime& now) {
    auto o = object(body);
    if (!o) {
        return std::nullopt;
    }
    Reading r{std::move(*o), {}};
    r.report.provider = provider;
    r.report.fetchedAt = now;
    return r;
}

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
        return TimeStamps::fromSeconds(value.toDouble());
    }
    if (value.isString()) {
        return TimeStamps::fromText(value.toString());
    }
    return std::nullopt;
}

std::optional<QString> text(const QJsonValue& value) {
    const QString s = value.toString();
    return s.isEmpty() ? std::nullopt : std::optional(s);
}

QString capitalized(const QString& word) {
    return word.left(1).toUpper() + word.mid(1);
}

std::optional<QString> plan(const QJsonValue& value) {
    const auto name = text(value);
    return name ? std::optional(capitalized(*name)) : std::nullopt;
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
        return countOf(std::llround(hours / 24.0), u"day", u"days");
    }
    return QStringLiteral("%1-hour").arg(std::llround(hours));
}

} // namespace tarvik::UsageJSON
