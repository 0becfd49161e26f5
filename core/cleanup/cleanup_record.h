#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace tarvik {

// One cleanup in the free-space timeline, drawn as a "Cleaned with Tarvik" marker.
struct CleanupRecord {
    QDateTime date;
    std::int64_t freedBytes = 0;
    int itemCount = 0;
    QString source;

    QJsonObject toJson() const;
    static std::optional<CleanupRecord> fromJson(const QJsonObject& o);
};

struct FreeSpaceSample {
    QDateTime date;
    std::int64_t freeBytes = 0;
    std::int64_t totalBytes = 0;
};

// The history of free space on the home file system and of Tarvik's cleanups, kept as JSON in
// Tarvik's data folder. A damaged file reads as an empty history; saving replaces the file
// atomically.
class FreeSpaceTimeline {
public:
    explicit FreeSpaceTimeline(QString filePath);
    static QString defaultFilePath(); // <Application Support>/free-space-timeline.json

    void load();
    bool save() const;
    void add(const CleanupRecord& record);
    // Keeps at most one sample an hour and 90 days of them.
    bool addSampleIfDue(const FreeSpaceSample& sample);

    const std::vector<CleanupRecord>& records() const { return records_; }
    const std::vector<FreeSpaceSample>& samples() const { return samples_; }

private:
    QString path_;
    std::vector<CleanupRecord> records_;
    std::vector<FreeSpaceSample> samples_;
};

} // namespace tarvik
