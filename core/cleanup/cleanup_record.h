#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tarvik {

// One cleanup in the free-space timeline, drawn as a "Cleaned with Tarvik" marker: the space
// deleting freed and how many items were deleted (what went to the Trash is not freed yet).
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
// Tarvik's data folder. A damaged file reads as an empty history (and is kept aside as
// "….damaged" by the next change); one that can't be read is never written over. Changes are
// made under a lock, so cleanups that end together are all recorded.
class FreeSpaceTimeline {
public:
    static constexpr std::size_t kMostRecords = 1000;                 // the newest are kept
    static constexpr std::size_t kMostSamples = std::size_t{90} * 24; // 90 days, hourly

    explicit FreeSpaceTimeline(QString filePath);
    static QString defaultFilePath(); // <Application Support>/free-space-timeline.json

    void load();
    // Adds the record to the file as it is now; false when the file could not be written.
    bool record(const CleanupRecord& record);
    // Adds the sample when an hour has passed since the last one in the file; false when it was
    // not due or could not be written.
    bool recordSampleIfDue(const FreeSpaceSample& sample);

    // The same on this copy only.
    void add(const CleanupRecord& record);
    bool addSampleIfDue(const FreeSpaceSample& sample);

    const std::vector<CleanupRecord>& records() const { return records_; }
    const std::vector<FreeSpaceSample>& samples() const { return samples_; }

private:
    void readFrom(const QJsonObject& root);
    QJsonObject toJson() const;
    // Reads the file under its lock, changes this copy and writes it back.
    bool change(const std::function<bool(FreeSpaceTimeline&)>& edit);

    QString path_;
    std::vector<CleanupRecord> records_;
    std::vector<FreeSpaceSample> samples_;
};

} // namespace tarvik
