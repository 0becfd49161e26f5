#include "core/speedtest/speed_test_result.h"

#include "core/text/whole_number.h"

#include <algorithm>

namespace tarvik {
namespace {

std::optional<double> number(const QJsonObject& o, const char* key) {
    const QJsonValue v = o.value(QLatin1String(key));
    return v.isDouble() ? std::optional(v.toDouble()) : std::nullopt;
}

} // namespace

QString rawValue(BufferbloatGrade grade) {
    static const char* const kLetters[] = {"A", "B", "C", "D", "F"};
    return QLatin1String(kLetters[static_cast<int>(grade)]);
}

QString summary(BufferbloatGrade grade) {
    switch (grade) {
    case BufferbloatGrade::A:
        return QStringLiteral("Latency barely changes under load.");
    case BufferbloatGrade::B:
        return QStringLiteral("Latency rises a little under load.");
    case BufferbloatGrade::C:
        return QStringLiteral("Calls and games may lag while the line is busy.");
    case BufferbloatGrade::D:
    case BufferbloatGrade::F:
        return QStringLiteral(
            "Latency soars under load — calls and games will suffer while anything "
            "downloads.");
    }
    return {};
}

BufferbloatGrade bufferbloatGrade(double idleMs, double loadedMs) {
    const double increase = loadedMs - idleMs;
    if (increase < 30) {
        return BufferbloatGrade::A;
    }
    if (increase < 60) {
        return BufferbloatGrade::B;
    }
    if (increase < 200) {
        return BufferbloatGrade::C;
    }
    return increase < 400 ? BufferbloatGrade::D : BufferbloatGrade::F;
}

std::optional<double> SpeedTestResult::loadedLatency() const {
    if (downloadLatency && uploadLatency) {
        return std::max(*downloadLatency, *uploadLatency);
    }
    return downloadLatency ? downloadLatency : uploadLatency;
}

std::optional<BufferbloatGrade> SpeedTestResult::bufferbloat() const {
    const auto loaded = loadedLatency();
    return loaded ? std::optional(bufferbloatGrade(idleLatency, *loaded)) : std::nullopt;
}

QJsonObject SpeedTestResult::toJson() const {
    QJsonObject o{{"id", id.toString(QUuid::WithoutBraces).toUpper()},
                  {"date", date.toUTC().toString(Qt::ISODate)},
                  {"downloadMbps", downloadMbps},
                  {"uploadMbps", uploadMbps},
                  {"idleLatency", idleLatency},
                  {"jitter", jitter},
                  {"bytesDownloaded", static_cast<double>(bytesDownloaded)},
                  {"bytesUploaded", static_cast<double>(bytesUploaded)}};
    if (downloadLatency) {
        o["downloadLatency"] = *downloadLatency;
    }
    if (uploadLatency) {
        o["uploadLatency"] = *uploadLatency;
    }
    if (server) {
        o["server"] = server->toJson();
    }
    if (connection) {
        o["connection"] = *connection;
    }
    return o;
}

std::optional<SpeedTestResult> SpeedTestResult::fromJson(const QJsonObject& o) {
    SpeedTestResult r;
    r.id = QUuid::fromString(o.value(QLatin1String("id")).toString());
    r.date = QDateTime::fromString(o.value(QLatin1String("date")).toString(), Qt::ISODate);
    if (r.id.isNull() || !r.date.isValid()) {
        return std::nullopt;
    }
    r.downloadMbps = number(o, "downloadMbps").value_or(0);
    r.uploadMbps = number(o, "uploadMbps").value_or(0);
    r.idleLatency = number(o, "idleLatency").value_or(0);
    r.jitter = number(o, "jitter").value_or(0);
    r.downloadLatency = number(o, "downloadLatency");
    r.uploadLatency = number(o, "uploadLatency");
    r.bytesDownloaded = wholeNumber<std::int64_t>(number(o, "bytesDownloaded").value_or(0));
    r.bytesUploaded = wholeNumber<std::int64_t>(number(o, "bytesUploaded").value_or(0));
    if (o.value(QLatin1String("server")).isObject()) {
        r.server = SpeedTestServer::fromJson(o.value(QLatin1String("server")).toObject());
    }
    if (o.value(QLatin1String("connection")).isString()) {
        r.connection = o.value(QLatin1String("connection")).toString();
    }
    return r;
}

QString rawValue(SpeedTestUseCase useCase) {
    static const char* const kRaw[] = {"browsing",   "hdStreaming", "uhdStreaming",
                                       "videoCalls", "gaming",      "cloudBackup"};
    return QLatin1String(kRaw[static_cast<int>(useCase)]);
}

QString title(SpeedTestUseCase useCase) {
    static const char* const kTitles[] = {"Web & email", "HD streaming",  "4K streaming",
                                          "Video calls", "Online gaming", "Uploads & backups"};
    return QLatin1String(kTitles[static_cast<int>(useCase)]);
}

QString title(Verdict verdict) {
    switch (verdict) {
    case Verdict::Poor:
        return QStringLiteral("Poor");
    case Verdict::Ok:
        return QStringLiteral("OK");
    case Verdict::Great:
        return QStringLiteral("Great");
    }
    return {};
}

std::optional<Verdict> verdictFromRaw(int raw) {
    return raw >= 0 && raw <= 2 ? std::optional(static_cast<Verdict>(raw)) : std::nullopt;
}

Verdict verdict(SpeedTestUseCase useCase, const SpeedTestResult& r) {
    const double d = r.downloadMbps;
    const double u = r.uploadMbps;
    const double p = r.idleLatency;
    const double j = r.jitter;
    const double l = r.loadedLatency().value_or(p);
    auto pick = [](bool great, bool ok) {
        return great ? Verdict::Great : ok ? Verdict::Ok : Verdict::Poor;
    };
    switch (useCase) {
    case SpeedTestUseCase::Browsing:
        return pick(d >= 10 && p < 100, d >= 2);
    case SpeedTestUseCase::HdStreaming:
        return pick(d >= 15, d >= 5);
    case SpeedTestUseCase::UhdStreaming:
        return pick(d >= 50, d >= 25);
    case SpeedTestUseCase::VideoCalls:
        return pick(d >= 10 && u >= 5 && p < 50 && j < 20 && l < 150,
                    d >= 3 && u >= 2 && p < 150 && j < 40);
    case SpeedTestUseCase::Gaming:
        return pick(p < 30 && j < 10 && l < 100 && d >= 10, p < 80 && j < 25 && d >= 3);
    case SpeedTestUseCase::CloudBackup:
        return pick(u >= 50, u >= 10);
    }
    return Verdict::Poor;
}

namespace SpeedFormat {

QString mbps(double value) {
    if (value >= 100) {
        return QString::asprintf("%.0f", value);
    }
    return value >= 10 ? QString::asprintf("%.1f", value) : QString::asprintf("%.2f", value);
}

QString milliseconds(double value) {
    return value < 10 ? QString::asprintf("%.1f ms", value) : QString::asprintf("%.0f ms", value);
}

} // namespace SpeedFormat

} // namespace tarvik
