#include "core/cleanup/cleanup_record.h"

#include "core/sys/json_file.h"
#include "core/sys/xdg_paths.h"
#include "core/text/whole_number.h"

#include <QJsonArray>
#include <QJsonDocument>
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
    r.freedBytes = wholeNumber<std::int64_t>(o.value(QLatin1String("freedBytes")).toDouble());
    r.itemCount = o.value(QLatin1String("itemCount")).toInt();
    r.source = o.value(QLatin1String("source")).toString();
    return r;
}

FreeSpaceTimeline::FreeSpaceTimeline(QString filePath) : path_(std::move(filePath)) {}

QString FreeSpaceTimeline::defaultFilePath() {
    return xdg::applicationSupport() + QStringLiteral("/free-space-timeline.json");
}

void FreeSpaceTimeline::load() {
    readFrom(JsonFile::read(path_).document.object());
}

void FreeSpaceTimeline::readFrom(const QJsonObject& root) {
    records_.clear();
    samples_.clear();
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
                {date, wholeNumber<std::int64_t>(o.value(QLatin1String("freeBytes")).toDouble()),
                 wholeNumber<std::int64_t>(o.value(QLatin1String("totalBytes")).toDouble())});
        }
    }
}

QJsonObject FreeSpaceTimeline::toJson() const {
    QJsonArray cleanups;
    const std::size_t first = records_.size() > kMostRecords ? records_.size() - kMostRecords : 0;
    for (std::size_t i = first; i < records_.size(); ++i) {
        cleanups.append(records_[i].toJson());
    }
    QJsonArray samples;
    for (const auto& s : samples_) {
        samples.append(
            QJsonObject{{QStringLiteral("date"), s.date.toUTC().toString(Qt::ISODate)},
                        {QStringLiteral("freeBytes"), static_cast<double>(s.freeBytes)},
                        {QStringLiteral("totalBytes"), static_cast<double>(s.totalBytes)}});
    }
    return {{QStringLiteral("cleanups"), cleanups}, {QStringLiteral("samples"), samples}};
}

bool FreeSpaceTimeline::change(const std::function<bool(FreeSpaceTimeline&)>& edit) {
    bool changed = false;
    const bool written = JsonFile::update(path_, [&](QJsonDocument& document) {
        readFrom(document.object());
        changed = edit(*this);
        document = QJsonDocument(toJson());
    });
    return written && changed;
}

bool FreeSpaceTimeline::record(const CleanupRecord& record) {
    return change([&record](FreeSpaceTimeline& t) {
        t.add(record);
        return true;
    });
}

bool FreeSpaceTimeline::recordSampleIfDue(const FreeSpaceSample& sample) {
    return change([&sample](FreeSpaceTimeline& t) { return t.addSampleIfDue(sample); });
}

void FreeSpaceTimeline::add(const CleanupRecord& record) {
    records_.push_back(record);
    if (records_.size() > kMostRecords) {
        records_.erase(records_.begin(),
                       records_.begin() + static_cast<long>(records_.size() - kMostRecords));
    }
}

bool FreeSpaceTimeline::addSampleIfDue(const FreeSpaceSample& sample) {
    if (!samples_.empty() && samples_.back().date.secsTo(sample.date) < 3600) {
        return false;
    }
    samples_.push_back(sample);
    if (samples_.size() > kMostSamples) {
        samples_.erase(samples_.begin(),
                       samples_.begin() + static_cast<long>(samples_.size() - kMostSamples));
    }
    return true;
}

} // namespace tarvik
