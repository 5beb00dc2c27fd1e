#include "Platform/V4l2/Controls/ExposureScale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Platform::V4l2 {
namespace {

TEST(ExposureScaleTest, OneSecondIsTenThousandUnits) {
    EXPECT_DOUBLE_EQ(ExposureScale::exponentOf(10'000), 0.0);
    EXPECT_DOUBLE_EQ(ExposureScale::exponentOf(625), -4.0);
    EXPECT_DOUBLE_EQ(ExposureScale::exponentOf(20'000), 1.0);
    EXPECT_DOUBLE_EQ(ExposureScale::unitsOf(-4.0), 625.0);
    EXPECT_DOUBLE_EQ(ExposureScale::unitsOf(0.0), 10'000.0);
}

TEST(ExposureScaleTest, AnExposureOfNothingIsTheShortestThatTheUnitHas) {
    EXPECT_DOUBLE_EQ(ExposureScale::exponentOf(0), ExposureScale::exponentOf(1));
    EXPECT_DOUBLE_EQ(ExposureScale::exponentOf(-7), ExposureScale::exponentOf(1));
}

TEST(ExposureScaleTest, TheGridHasTheWholeStopsWithinTheRange) {
    const auto grid = ExposureScale::grid({3, 2047, 1});
    EXPECT_EQ(grid.Min, -11.0); // 244 us are 2 units, too short; 488 us are 5
    EXPECT_EQ(grid.Max, -3.0);  // 250 ms are 2500 units, too long
    EXPECT_EQ(grid.Step, 1.0);
}

TEST(ExposureScaleTest, EachStopOfAGridReadsBackAsItself) {
    for (const IntegerRange& range :
         {IntegerRange{3, 2047, 1}, IntegerRange{1, 10'000, 1}, IntegerRange{1, 5000, 1}, IntegerRange{5, 20'000, 1},
          IntegerRange{78, 10'000, 1}, IntegerRange{0, 1'000'000'000, 1}, IntegerRange{156, 156, 1},
          IntegerRange{10, 626, 1}, IntegerRange{-5, 333, 1}}) {
        const auto grid = ExposureScale::grid(range);
        for (double stop = grid.Min; stop <= grid.Max; stop += 1.0) {
            const std::int32_t units = range.nearest(ExposureScale::unitsOf(stop));
            EXPECT_GE(units, range.min);
            EXPECT_LE(units, range.max);
            EXPECT_EQ(std::round(ExposureScale::exponentOf(units)), stop) << range.min << " to " << range.max;
        }
    }
}

TEST(ExposureScaleTest, TheUsualRangesOfUsbCameras) {
    const auto second = ExposureScale::grid({1, 10'000, 1});
    EXPECT_EQ(second.Min, -13.0);
    EXPECT_EQ(second.Max, 0.0);
    const auto half = ExposureScale::grid({1, 5000, 1});
    EXPECT_EQ(half.Max, -1.0);
}

TEST(ExposureScaleTest, ASingleValueCannotBeChanged) {
    const auto grid = ExposureScale::grid({156, 156, 1});
    EXPECT_EQ(grid.Min, -6.0);
    EXPECT_EQ(grid.Max, -6.0);
    EXPECT_EQ(grid.Step, 0.0);
}

TEST(ExposureScaleTest, ARangeBetweenTwoStopsCannotBeChanged) {
    const auto grid = ExposureScale::grid({400, 430, 1});
    EXPECT_EQ(grid.Min, -5.0);
    EXPECT_EQ(grid.Max, -5.0);
    EXPECT_EQ(grid.Step, 0.0);
}

TEST(IntegerRangeTest, TheNearestValueIsOnTheGridAndWithinTheRange) {
    const IntegerRange range{10, 33, 5};
    EXPECT_EQ(range.nearest(12.4), 10);
    EXPECT_EQ(range.nearest(12.5), 15);
    EXPECT_EQ(range.nearest(32.9), 30);
    EXPECT_EQ(range.nearest(33.0), 33);
    EXPECT_EQ(range.nearest(1e300), 33);
    EXPECT_EQ(range.nearest(-1e300), 10);
    EXPECT_EQ(range.nearest(std::numeric_limits<double>::infinity()), 33);
    EXPECT_EQ(range.nearest(std::numeric_limits<double>::quiet_NaN()), 10);
    EXPECT_EQ((IntegerRange{0, 10, 0}.nearest(3.2)), 3);
}

} // namespace
} // namespace Platform::V4l2
