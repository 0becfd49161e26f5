#include "core/agents/limits/retry_after.h"

#include <gtest/gtest.h>

using namespace tarvik;

TEST(RetryAfter, SecondsOrAnHttpDate) {
    const QDateTime now = QDateTime(QDate(2026, 11, 22), QTime(8, 49, 0), Qt::UTC);
    EXPECT_EQ(retryAfterSeconds(" 120 ", now), 120.0);
    EXPECT_EQ(retryAfterSeconds("1.5", now), 1.5);
    EXPECT_EQ(retryAfterSeconds("Sun, 22 Nov 2026 08:49:37 GMT", now), 37.0);
    // A date already past means "now", never a negative wait.
    EXPECT_EQ(retryAfterSeconds("Sun, 22 Nov 2026 08:00:00 GMT", now), 0.0);
    EXPECT_EQ(retryAfterSeconds("-5", now), 0.0);
    // The date is read in GMT whatever the local zone, and only in the HTTP form.
    EXPECT_FALSE(retryAfterSeconds("Sun, 22 Nov 2026 08:49:37", now));
    EXPECT_FALSE(retryAfterSeconds("2026-11-22T08:49:37Z", now));
    EXPECT_FALSE(retryAfterSeconds("soon", now));
    EXPECT_FALSE(retryAfterSeconds("", now));
}
