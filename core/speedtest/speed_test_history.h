#pragma once

#include "core/speedtest/speed_test_result.h"

#include <QString>
#include <vector>

namespace tarvik {

// The last 100 results, newest first, in "Tarvik/speedtests.json" of the data folder.
class SpeedTestHistoryStore {
public:
    static constexpr std::size_t kLimit = 100;
    explicit SpeedTestHistoryStore(QString filePath = defaultFilePath());
    static QString defaultFilePath();

    // A missing, unreadable or damaged file is an empty history.
    std::vector<SpeedTestResult> load() const;
    // Keeps the first 100 and replaces the file atomically; false when it could not be written.
    bool save(const std::vector<SpeedTestResult>& results) const;

private:
    QString path_;
};

} // namespace tarvik
