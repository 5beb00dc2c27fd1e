#include "Services/LarkspurWindowsCameraHub/ExposureRange.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using std::chrono::microseconds;

ExposureRange rangeOf(double min, double max, double step) {
    ExposureRange range;
    range.min = min;
    range.max = max;
    range.step = step;
    return range;
}

TEST(ExponentToMicrosecondsTest, WholeStopsDivideASecond) {
    EXPECT_EQ(exponentToMicroseconds(-4), microseconds(62500));
    EXPECT_EQ(exponentToMicroseconds(-7), microseconds(7812));
    EXPECT_EQ(exponentToMicroseconds(-13), microseconds(122));
}

TEST(ExponentToMicrosecondsTest, FractionsRoundToAWholeStopHalvesAwayFromZero) {
    EXPECT_EQ(exponentToMicroseconds(-3.6), microseconds(62500));
    EXPECT_EQ(exponentToMicroseconds(-4.5), microseconds(31250));
    EXPECT_EQ(exponentToMicroseconds(-4.49), microseconds(62500));
    EXPECT_EQ(exponentToMicroseconds(1.5), microseconds(4000000));
}

TEST(ExponentToMicrosecondsTest, ZeroIsOneSecond) {
    EXPECT_EQ(exponentToMicroseconds(0), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(-0.0), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(-0.4), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(0.4), microseconds(1000000));
}

TEST(ExponentToMicrosecondsTest, PositiveExponentsMultiplyASecond) {
    EXPECT_EQ(exponentToMicroseconds(1), microseconds(2000000));
    EXPECT_EQ(exponentToMicroseconds(11), microseconds(2048000000));
}

TEST(ExponentToMicrosecondsTest, FromTwelveOnThe32BitResultWraps) {
    EXPECT_EQ(exponentToMicroseconds(12), microseconds(-198967296));
    EXPECT_EQ(exponentToMicroseconds(13), microseconds(-397934592));
    EXPECT_EQ(exponentToMicroseconds(26), microseconds(0));
}

TEST(ExponentToMicrosecondsTest, OnlyTheLowFiveBitsOfTheMagnitudeShift) {
    EXPECT_EQ(exponentToMicroseconds(32), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(33), microseconds(2000000));
    EXPECT_EQ(exponentToMicroseconds(-32), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(-33), microseconds(500000));
    EXPECT_EQ(exponentToMicroseconds(-20), microseconds(0));
    EXPECT_EQ(exponentToMicroseconds(-31), microseconds(0));
}

TEST(ExponentToMicrosecondsTest, OnlyTheLowFiveBitsShiftBeyond32BitsToo) {
    EXPECT_EQ(exponentToMicroseconds(2147483647.0), microseconds(0)); // 31
    EXPECT_EQ(exponentToMicroseconds(2147483649.0), microseconds(2000000));
    EXPECT_EQ(exponentToMicroseconds(-2147483649.0), microseconds(500000));
    EXPECT_EQ(exponentToMicroseconds(4294967298.0), microseconds(4000000));
    EXPECT_EQ(exponentToMicroseconds(-4503599627370499.0), microseconds(125000)); // 2^52 + 3
    EXPECT_EQ(exponentToMicroseconds(9223372036854775808.0), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(std::numeric_limits<double>::max()), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(std::numeric_limits<double>::lowest()), microseconds(1000000));
}

TEST(ExponentToMicrosecondsTest, ValuesThatNoIntegerHoldsDoNotShift) {
    EXPECT_EQ(exponentToMicroseconds(std::numeric_limits<double>::infinity()), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(-std::numeric_limits<double>::infinity()), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(std::nan("")), microseconds(1000000));
    EXPECT_EQ(exponentToMicroseconds(-1e300), microseconds(1000000));
}

TEST(ExposureRangeTest, TheDefaultRecordIsOneSixteenthOfASecondThatCannotBeChanged) {
    const ExposureRange range;
    EXPECT_EQ(range.step, 0.0);
    EXPECT_EQ(range.minExposureInUs(), microseconds(62500));
    EXPECT_EQ(range.maxExposureInUs(), microseconds(62500));
}

TEST(ExposureRangeTest, ATimeGoesToTheNearestPointOfTheGridFromTheMinimum) {
    EXPECT_EQ(rangeOf(-13, 0, 1).exponentFromMicroseconds(50000), -4.0);
    EXPECT_EQ(rangeOf(-13, 0, 1).exponentFromMicroseconds(62500), -4.0);
    EXPECT_EQ(rangeOf(-12.5, 0, 1).exponentFromMicroseconds(50000), -4.5);
}

TEST(ExposureRangeTest, AFractionalStepGivesAFractionalExponent) {
    const double exponent = rangeOf(-10, 0, 0.5).exponentFromMicroseconds(50000);
    EXPECT_EQ(exponent, -4.5);
    EXPECT_EQ(exponentToMicroseconds(exponent), microseconds(31250));
}

TEST(ExposureRangeTest, ATimeBeyondTheRangeEndsAtItsNearerEnd) {
    const auto range = rangeOf(-13, -2, 1);
    EXPECT_EQ(range.exponentFromMicroseconds(10000000), -2.0);
    EXPECT_EQ(exponentToMicroseconds(range.exponentFromMicroseconds(10000000)), microseconds(250000));
    EXPECT_EQ(range.exponentFromMicroseconds(1), -13.0);
}

TEST(ExposureRangeTest, NoTimeAtAllEndsAtTheMinimum) {
    EXPECT_EQ(rangeOf(-13, 0, 1).exponentFromMicroseconds(0), -13.0);
}

TEST(ExposureRangeTest, ANegativeTimeComesOutAsNotANumber) {
    EXPECT_TRUE(std::isnan(rangeOf(-13, 0, 1).exponentFromMicroseconds(-5)));
}

TEST(ExposureRangeTest, WithoutAStepEveryTimeAndPercentageIsTheMinimum) {
    EXPECT_EQ(rangeOf(-6, -2, 0).exponentFromMicroseconds(50000), -6.0);
    EXPECT_EQ(rangeOf(-6, -2, 0).exponentFromPercent(100), -6.0);
}

TEST(ExposureRangeTest, PercentCountsStopsDownFromTheMaximum) {
    const auto range = rangeOf(-13, -2, 1);
    EXPECT_EQ(range.exponentFromPercent(100), -2.0);
    EXPECT_EQ(range.exponentFromPercent(50), -3.0);
    EXPECT_EQ(range.exponentFromPercent(25), -4.0);
    EXPECT_EQ(rangeOf(-13, 0, 1).exponentFromPercent(1), -7.0);
}

TEST(ExposureRangeTest, PercentIsOnAGridFromTheMaximumAndATimeOnOneFromTheMinimum) {
    const auto range = rangeOf(-10, -0.5, 1);
    EXPECT_EQ(range.exponentFromPercent(50), -1.5);
    EXPECT_EQ(range.exponentFromMicroseconds(250000), -2.0);
}

TEST(ExposureRangeTest, PercentZeroIsTheMinimumAndAbove100TheMaximum) {
    const auto range = rangeOf(-13, -2, 1);
    EXPECT_EQ(range.exponentFromPercent(0), -13.0);
    EXPECT_EQ(range.exponentFromPercent(200), -2.0);
    EXPECT_EQ(range.exponentFromPercent(0.0001), -13.0);
}

TEST(ExposureRangeTest, ANegativePercentageComesOutAsNotANumber) {
    EXPECT_TRUE(std::isnan(rangeOf(-13, 0, 1).exponentFromPercent(-1)));
}

} // namespace
