// Dollar and token figures as the Agents screen and the command line write them.
#include "core/agents/spend/usage_format.h"

#include <gtest/gtest.h>

using namespace tarvik;

TEST(UsageFormat, DollarsWithCentsBelowAThousandThenWholeAndGrouped) {
    EXPECT_EQ(UsageFormat::dollars(0), "$0.00");
    EXPECT_EQ(UsageFormat::dollars(0.42), "$0.42");
    EXPECT_EQ(UsageFormat::dollars(999.99), "$999.99");
    EXPECT_EQ(UsageFormat::dollars(999.999), "$1,000"); // not "$1000.00"
    EXPECT_EQ(UsageFormat::dollars(1234.4), "$1,234");
    EXPECT_EQ(UsageFormat::dollars(1'234'567.6), "$1,234,568");
}

TEST(UsageFormat, TokensShortenedFromAThousand) {
    EXPECT_EQ(UsageFormat::tokens(0), "0");
    EXPECT_EQ(UsageFormat::tokens(999), "999");
    EXPECT_EQ(UsageFormat::tokens(1000), "1K");
    EXPECT_EQ(UsageFormat::tokens(1500), "2K");
    EXPECT_EQ(UsageFormat::tokens(2'500'000), "2.5M");
    EXPECT_EQ(UsageFormat::tokens(3'210'000'000), "3.2B");
}
