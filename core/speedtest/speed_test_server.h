#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <optional>

namespace tarvik {

// Where a speed test ran, as the service describes itself; every field may be missing.
struct SpeedTestServer {
    std::optional<QString> colo; // the data-centre code
    std::optional<QString> city;
    std::optional<QString> country;
    std::optional<QString> clientIP;
    std::optional<QString> isp;
    std::optional<std::int64_t> asn;
    std::optional<QString> httpProtocol;

    // From the "meta" document; a body that is not a JSON object gives none.
    static std::optional<SpeedTestServer> fromMeta(const QByteArray& body);
    // From the plain-text trace ("key=value" lines).
    static SpeedTestServer fromTrace(const QString& body);
    // Field by field: this record's value wins, a missing one comes from `other`.
    SpeedTestServer filled(const SpeedTestServer& other) const;
    // "Frankfurt (FRA)", "Frankfurt", "FRA", or none.
    std::optional<QString> locationText() const;

    QJsonObject toJson() const;
    static SpeedTestServer fromJson(const QJsonObject& o);
    bool operator==(const SpeedTestServer&) const = default;
};

} // namespace tarvik
