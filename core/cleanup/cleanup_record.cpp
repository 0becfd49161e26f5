#include "core/cleanup/cleanup_record.h"

#include "core/platform/xdg_paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <utility>

namespace tarvik {

QJsonObject CleanupRecord::toJson() const {
    return {{QStringLiteral("date"), date.toUTC().toString(Qt::ISODate)},
            {QStringLiteral("freedBytes"), static_cast<double>(freedBytes)},
            {QStringLiteral("itemCount"), itemCount},
            {QStringLiteral("source"), source}};
}

std::optional<CleanupRecord> CleanupRecord::fromJson(const QJsonObject& o) {
    CleanupRecord r;
    r.date = QDateTime::fromString(o.value(QLatin1String("date")).toString(), Qt::ISODate);
    if (!r.date.isValid()) {
        return std::nullopt;
    }
    r.freedBytes = static_cast<std::int64_t>(o.value(QLatin1String("freedBytes")).toDouble());
    r.itemCount = o.value(QLatin1String("itemCount")).toInt();
    r.source = o.value(QLatin1String("source")).toString();
    return r;
}

FreeSpaceTimeline::FreeSpaceTimeline(QString filePath) : path_(std::move(filePath)) {}

QString FreeSpaceTimeline::defaultFilePath() {
    return xdg::applicationSupport() + QStringLiteral("/free-space-timeline.json");
}

void FreeSpaceTimeline::load() {
    records_.clear();
    samples_.clear();
    QFile f(path_);
    if (!f.open(QIODevice::ReadOnly)) {
        return;
    }
    const QJsonObject root = QJsonDocument::fromJson(f.readAll()).object();
    for (const auto& v : root.value(QLatin1String("cleanups")).toArray()) {
        if (auto r = CleanupRecord::fromJson(v.toObject())) {
            records_.push_back(*r);
        }
    }
    for (const auto& v : root.value(QLatin1String("samples")).toArray()) {
        const QJsonObject o = v.toObject();
        const QDateTime date =
            QDateTime::fromString(o.value(QLatin1String("date")).toString(), Qt::ISODate);
        if (date.isValid()) {
            samples_.push_back(
                {date, static_cast<std::int64_t>(o.value(QLatin1String("freeBytes")).toDouble()),
                 static_cast<std::int64_t>(o.value(QLatin1String("totalBytes")).toDouble())});
        }
    }
}

bool FreeSpaceTimeline::save() const {
    QJsonArray cleanups;
    for (const auto& r : records_) {
        cleanups.append(r.toJson());
    }
    QJsonArray samples;
    for (const auto& s : samples_) {
        samples.append(
            QJsonObject{{QStringLiteral("date"), s.date.toUTC().toString(Qt::ISODate)},
                        {QStringLiteral("freeBytes"), static_cast<double>(s.freeBytes)},
                        {QStringLiteral("totalBytes"), static_cast<double>(s.totalBytes)}});
    }
    QDir().mkpath(QFileInfo(path_).absolutePath());
    QSaveFile f(path_);
    if (!f.open(QIODevice::WriteOnly)) {
        return false;
    }
    f.write(QJsonDocument(QJsonObject{{QStringLiteral("cleanups"), cleanups},
                                      {QStringLiteral("samples"), samples}})
                .toJson(QJsonDocument::Indented));
    return f.commit();
}

void FreeSpaceTimeline::add(const CleanupRecord& record) {
    records_.push_back(record);
}

bool FreeSpaceTimeline::addSampleIfDue(const FreeSpaceSample& sample) {
    if (!samples_.empty() && samples_.back().date.secsTo(sample.date) < 3600) {
        return false;
    }
    samples_.push_back(sample);
    constexpr std::size_t kKept = std::size_t{90} * 24;
    if (samples_.size() > kKept) {
        samples_.erase(samples_.begin(),
                       samples_.begin() + static_cast<long>(samples_.size() - kKept));
    }
    return true;
}

} // namespace tarvik
