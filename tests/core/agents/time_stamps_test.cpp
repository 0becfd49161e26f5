// Time stamps as the services and the agents write them.
#include "core/agents/time_stamps.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace tarvik;

// The agents' own layout is read by hand; it must land on the very millisecond Qt's reading gives,
// and leave everything else to Qt.
TEST(TimeStamps, TheAgentsLayoutReadByHandAsQtReadsIt) {
    auto same = [](const std::string& text) {
        const auto byHand = TimeStamps::fromUtf8(text);
        const auto byQt = TimeStamps::fromText(QString::fromStdString(text));
        EXPECT_EQ(byHand, byQt) << text;
        if (byHand) {
            EXPECT_EQ(byHand->timeSpec(), Qt::UTC) << text;
        }
    };
    // Every fraction of 1 to 4 digits, rounded half up, carried into the next second, minute,
    // day and year at the last moment of one.
    for (int digits = 1; digits <= 4; ++digits) {
        int limit = 1;
        for (int i = 0; i < digits; ++i) {
            limit *= 10;
        }
        for (int f = 0; f < limit; ++f) {
            char text[64];
            std::snprintf(text, sizeof text, "2026-12-31T23:59:59.%0*dZ", digits, f);
            same(text);
        }
    }
    for (const char* text :
         {"2026-11-22T08:30:05.123456Z", "2026-11-22T08:30:05.123456789Z",
          "2026-11-22T08:30:05.9999995+05:30", "2026-11-22T08:30:05-03:30",
          "2026-11-22T00:10:00+14:00", "2026-11-22T23:50:00-12:00", "2026-11-22T08:30:05+23:59",
          "2024-02-29T12:00:00Z", "1970-01-01T00:00:00Z", "1969-12-31T23:59:59.999Z",
          "2000-03-01T00:00:00+00:00", "2026-11-22T08:30:05-00:00",
          // not the usual layout: Qt's reading, whatever it makes of them
          "2026-11-22T08:30:05z", "2026-11-22 08:30:05Z", "2026-11-22T08:30:05+0100",
          "2026-11-22T24:00:00Z", "2026-11-22T08:30:05", "2026-11-22T08:30Z", "2026-11-22",
          " 2026-11-22T08:30:05Z", "2026-11-22T08:30:05.1234567890Z",
          // no such date or time: none
          "2026-02-29T08:30:05Z", "2026-04-31T08:30:05Z", "2026-13-01T08:30:05Z",
          "2026-11-22T23:59:60Z", "2026-11-22T08:60:05Z", "2026-11-22T08:30:05+24:00",
          "2026-11-22T08:30:05+01:60", "2026-11-22T08:30:05.Z", "2026-11-22T08:30:05.5",
          "0000-01-01T00:00:00Z", "2026-11-22T08:30:05Zulu", "2026-1x-22T08:30:05Z", ""}) {
        same(text);
    }
    EXPECT_EQ(TimeStamps::isoDate("2026-11-22T09:30:05.0005+01:00"),
              QDateTime(QDate(2026, 11, 22), QTime(8, 30, 5, 1), Qt::UTC));
    EXPECT_FALSE(TimeStamps::isoDate("2026-11-22T24:00:00Z")); // Qt's to read
    EXPECT_FALSE(TimeStamps::isoDate("2026-02-29T08:30:05Z"));
    EXPECT_FALSE(TimeStamps::fromUtf8("2026-02-29T08:30:05Z"));
}

TEST(TimeStamps, SecondsToTheMillisecondCutAndNoneBeyondWhatADateHolds) {
    const QDateTime second = QDateTime::fromSecsSinceEpoch(1'795'348'800, Qt::UTC);
    EXPECT_EQ(TimeStamps::fromSeconds(1'795'348'800.1239), second.addMSecs(123));
    EXPECT_EQ(TimeStamps::fromSeconds(1'795'348'800)->timeSpec(), Qt::UTC);
    EXPECT_FALSE(TimeStamps::fromSeconds(1e300));
    EXPECT_FALSE(TimeStamps::fromSeconds(-std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(TimeStamps::fromSeconds(std::numeric_limits<double>::quiet_NaN()));
}
