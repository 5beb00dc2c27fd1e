#include "Platform/Simulated/World/ControlGrid.h"

#include <gtest/gtest.h>

#include <limits>

using Platform::Simulated::ControlGrid;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(ControlGridTest, AValueOutsideTheRangeIsBroughtIntoIt) {
    const ControlGrid grid{-13, -2, 1};
    EXPECT_EQ(grid.nearestPoint(3), -2);
    EXPECT_EQ(grid.nearestPoint(-20), -13);
    EXPECT_EQ(grid.nearestPoint(infinity), -2);
    EXPECT_EQ(grid.nearestPoint(-infinity), -13);
}

TEST(ControlGridTest, AValueBesideTheGridGoesToTheNearestPoint) {
    const ControlGrid grid{-13, 0, 1};
    EXPECT_EQ(grid.nearestPoint(-4.3), -4);
    EXPECT_EQ(grid.nearestPoint(-4.7), -5);
    EXPECT_EQ(grid.nearestPoint(-4), -4);
}

TEST(ControlGridTest, HalfWayGoesToTheLargerPoint) {
    EXPECT_EQ((ControlGrid{-13, 0, 1}.nearestPoint(-4.5)), -4);
    EXPECT_EQ((ControlGrid{0, 10, 4}.nearestPoint(2)), 4);
    EXPECT_DOUBLE_EQ((ControlGrid{0, 1, 0.1}.nearestPoint(0.15)), 0.2);
}

TEST(ControlGridTest, TheGridCountsFromTheMinimum) {
    EXPECT_EQ((ControlGrid{1, 10, 4}.nearestPoint(4)), 5);
    EXPECT_EQ((ControlGrid{1, 10, 4}.nearestPoint(2)), 1);
}

TEST(ControlGridTest, TheLastPointIsTheLastWithinTheRange) {
    EXPECT_EQ((ControlGrid{0, 10, 4}.nearestPoint(10)), 8);
    EXPECT_EQ((ControlGrid{0, 10, 4}.nearestPoint(100)), 8);
    EXPECT_EQ((ControlGrid{-10, 0, 0.1}.nearestPoint(5)), 0);
}

TEST(ControlGridTest, WithoutAStepEveryValueOfTheRangeStands) {
    EXPECT_EQ((ControlGrid{0, 1, 0}.nearestPoint(0.123)), 0.123);
    EXPECT_EQ((ControlGrid{0, 1, 0}.nearestPoint(2)), 1);
}

TEST(ControlGridTest, AValueOnADecimalGridStandsAsItIs) { EXPECT_EQ((ControlGrid{0, 1, 0.1}.nearestPoint(0.3)), 0.3); }

TEST(ControlGridTest, ARangeOfOneValueHasThatValue) { EXPECT_EQ((ControlGrid{0, 0, 1}.nearestPoint(7)), 0); }

} // namespace
