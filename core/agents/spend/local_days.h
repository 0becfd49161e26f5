#pragma once

#include <QDate>
#include <QDateTime>
#include <unordered_map>

namespace tarvik {

// The local calendar day of many instants in a row. The zone's offset from UTC is looked up once
// per hour of time: each lookup makes the C library check the zone file again (a stat call),
// which for a month of agent answers cost more than reading the logs.
class LocalDays {
public:
    QDate of(const QDateTime& t);

private:
    // The hour's offset in seconds, or kChanges when the offset changes within the hour.
    std::unordered_map<qint64, int> offsets_;
    static constexpr int kChanges = 1 << 30;
};

} // namespace tarvik
