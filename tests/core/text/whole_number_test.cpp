#include "core/text/whole_number.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

using namespace tarvik;

TEST(WholeNumber, OutsideNumbersThatDoNotFitTakeTheNearestEnd) {
    constexpr auto kTop = std::numeric_limits<std::int64_t>::max();
    constexpr auto kBottom = std::numeric_limits<std::int64_t>::min();
    constexpr double kInf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(wholeNumber<std::int64_t>(2.06667e77), kTop);
    EXPECT_EQ(wholeNumber<std::int64_t>(9223372036854775808.0), kTop);                // 2^63
    EXPECT_EQ(wholeNumber<std::int64_t>(9223372036854774784.0), 9223372036854774784); // below it
    EXPECT_EQ(wholeNumber<std::int64_t>(-kInf), kBottom);
    EXPECT_EQ(wholeNumber<std::int64_t>(-9223372036854775808.0), kBottom);
    EXPECT_EQ(wholeNumber<std::int64_t>(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(wholeNumber<int>(2147483647.5), 2147483647);
    EXPECT_EQ(wholeNumber<int>(2147483648.0), 2147483647);
    EXPECT_EQ(wholeNumber<int>(-2147483649.0), std::numeric_limits<int>::min());
    EXPECT_EQ(wholeNumber<std::uint8_t>(-3.0), 0);
    EXPECT_EQ(wholeNumber<std::uint8_t>(255.9), 255);
    EXPECT_EQ(wholeNumber<std::uint8_t>(kInf), 255);

    EXPECT_EQ(wholeNumber<int>(-2.7), -2);   // the fraction dropped
    EXPECT_EQ(roundedNumber<int>(-2.5), -3); // half away from zero
    EXPECT_EQ(roundedNumber<int>(112.4), 112);
    EXPECT_EQ(roundedNumber<std::int64_t>(kInf), kTop);
}
