#pragma once

#include "core/speedtest/speed_test_result.h"

#include <QString>
#include <QUuid>
#include <optional>
#include <vector>

namespace tarvik {

// The last 100 results, newest first, in "Tarvik/speedtests.json" of the data folder. Every
// change is one step among processes (a lock, the file read again, an atomic replace), and
// works on the file's own entries: one that can't be read is skipped when showing the history,
// kept as it is when changing it, and a file that can't be read at all is never written over.
class SpeedTestHistoryStore {
public:
    static constexpr std::size_t kLimit = 100;
    explicit SpeedTestHistoryStore(QString filePath = defaultFilePath());
    static QString defaultFilePath();

    // The results that can be read; a missing, unreadable or damaged file is an empty history.
    std::vector<SpeedTestResult> load() const;
    // Each returns the history after the change, or none when the file could not be written.
    std::optional<std::vector<SpeedTestResult>> add(const SpeedTestResult& result) const;
    std::optional<std::vector<SpeedTestResult>> remove(const QUuid& id) const;
    std::optional<std::vector<SpeedTestResult>> clear() const;

private:
    std::optional<std::vector<SpeedTestResult>>
    change(const std::function<void(QJsonArray&)>& edit) const;

    QString path_;
};

} // namespace tarvik
