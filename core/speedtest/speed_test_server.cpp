#include "core/speedtest/speed_test_server.h"

#include "core/text/whole_number.h"

#include <QJsonDocument>
#include <QStringList>

namespace tarvik {
namespace {

std::optional<QString> text(const QJsonObject& o, const char* key) {
    const QJsonValue v = o.value(QLatin1String(key));
    return v.isString() ? std::optional(v.toString()) : std::nullopt;
}

template <class T> void fill(std::optional<T>& mine, const std::optional<T>& theirs) {
    if (!mine) {
        mine = theirs;
    }
}

template <class T> void put(QJsonObject& o, const char* key, const std::optional<T>& v) {
    if (v) {
        if constexpr (std::is_same_v<T, std::int64_t>) {
            o.insert(QLatin1String(key), static_cast<double>(*v));
        } else {
            o.insert(QLatin1String(key), *v);
        }
    }
}

} // namespace

std::optional<SpeedTestServer> SpeedTestServer::fromMeta(const QByteArray& body) {
    const QJsonDocument doc = QJsonDocument::fromJson(body);
    if (!doc.isObject()) {
        return std::nullopt;
    }
    const QJsonObject o = doc.object();
    SpeedTestServer s;
    s.colo = text(o, "colo");
    // Newer answers describe the data centre as an object; its IATA code is the short name.
    if (!s.colo && o.value(QLatin1String("colo")).isObject()) {
        s.colo = text(o.value(QLatin1String("colo")).toObject(), "iata");
    }
    s.city = text(o, "city");
    s.country = text(o, "country");
    s.clientIP = text(o, "clientIp");
    s.isp = text(o, "asOrganization");
    if (o.value(QLatin1String("asn")).isDouble()) {
        s.asn = wholeNumber<std::int64_t>(o.value(QLatin1String("asn")).toDouble());
    }
    s.httpProtocol = text(o, "httpProtocol");
    return s;
}

SpeedTestServer SpeedTestServer::fromTrace(const QString& body) {
    SpeedTestServer s;
    for (const QString& line : body.split(QLatin1Char('\n'))) {
        const auto eq = line.indexOf(QLatin1Char('='));
        if (eq < 0) {
            continue;
        }
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1).trimmed();
        if (key == QLatin1String("colo")) {
            s.colo = value;
        } else if (key == QLatin1String("ip")) {
            s.clientIP = value;
        } else if (key == QLatin1String("loc")) {
            s.country = value;
        } else if (key == QLatin1String("http")) {
            s.httpProtocol = value;
        }
    }
    return s;
}

SpeedTestServer SpeedTestServer::filled(const SpeedTestServer& other) const {
    SpeedTestServer s = *this;
    fill(s.colo, other.colo);
    fill(s.city, other.city);
    fill(s.country, other.country);
    fill(s.clientIP, other.clientIP);
    fill(s.isp, other.isp);
    fill(s.asn, other.asn);
    fill(s.httpProtocol, other.httpProtocol);
    return s;
}

std::optional<QString> SpeedTestServer::locationText() const {
    if (city && colo) {
        return *city + QStringLiteral(" (") + *colo + QLatin1Char(')');
    }
    if (city) {
        return city;
    }
    return colo;
}

QJsonObject SpeedTestServer::toJson() const {
    QJsonObject o;
    put(o, "colo", colo);
    put(o, "city", city);
    put(o, "country", country);
    put(o, "clientIP", clientIP);
    put(o, "isp", isp);
    put(o, "asn", asn);
    put(o, "httpProtocol", httpProtocol);
    return o;
}

SpeedTestServer SpeedTestServer::fromJson(const QJsonObject& o) {
    SpeedTestServer s;
    s.colo = text(o, "colo");
    s.city = text(o, "city");
    s.country = text(o, "country");
    s.clientIP = text(o, "clientIP");
    s.isp = text(o, "isp");
    if (o.value(QLatin1String("asn")).isDouble()) {
        s.asn = wholeNumber<std::int64_t>(o.value(QLatin1String("asn")).toDouble());
    }
    s.httpProtocol = text(o, "httpProtocol");
    return s;
}

} // namespace tarvik
