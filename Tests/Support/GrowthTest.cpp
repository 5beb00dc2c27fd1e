#include "Tests/Support/Growth.h"

#include <gtest/gtest.h>

namespace {

/// Work in that many steps, which no compiler takes away.
void doSteps(std::size_t count) {
    for (volatile std::size_t step = 0; step < count;)
        step = step + 1;
}

TEST(GrowthTest, WorkThatGrowsAsItsInputIsTakenForLinear) {
    EXPECT_LT(growth([](std::size_t size) { return [size] { doSteps(size); }; }), linearGrowth);
}

TEST(GrowthTest, WorkThatGrowsWithTheSquareIsNot) {
    constexpr std::size_t scale = 300; // bytes
    EXPECT_GT(growth([](std::size_t size) { return [size] { doSteps(size / scale * (size / scale)); }; }),
              linearGrowth);
}

} // namespace
