#include "Platform/Simulated/Picture/SceneExposure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace Platform::Simulated {
namespace {

using Samples = std::vector<std::uint8_t>;

/// All 256 samples in rising order.
Samples ramp() {
    Samples samples;
    for (int sample = 0; sample < 256; ++sample)
        samples.push_back(static_cast<std::uint8_t>(sample));
    return samples;
}

/// The same, exposed by that many stops.
Samples exposedRamp(double stops) {
    Samples samples = ramp();
    SceneExposure(stops).apply(samples);
    return samples;
}

TEST(SceneExposureTest, LeavesEveryPixelAsItIsAtZeroStops) {
    EXPECT_EQ(exposedRamp(0), ramp());
    EXPECT_EQ(exposedRamp(-0.0), ramp());
}

TEST(SceneExposureTest, MultipliesLinearLight) {
    // Linear light of sRGB samples: 255 is 1, 188 is 1/2, 137 is 1/4, 99 is 1/8; below 11 it is proportional.
    EXPECT_EQ(exposedRamp(-1)[255], 188);
    EXPECT_EQ(exposedRamp(-2)[255], 137);
    EXPECT_EQ(exposedRamp(-3)[255], 99);
    EXPECT_EQ(exposedRamp(1)[137], 188);
    EXPECT_EQ(exposedRamp(1)[99], 137);
    EXPECT_EQ(exposedRamp(1)[5], 10);
    EXPECT_EQ(exposedRamp(-1)[10], 5);
    EXPECT_EQ(exposedRamp(-0.5)[255], 219);
}

TEST(SceneExposureTest, ClipsAtWhite) {
    EXPECT_EQ(exposedRamp(1)[188], 255);
    EXPECT_EQ(exposedRamp(1)[187], 254);
    EXPECT_EQ(exposedRamp(2)[200], 255);
}

TEST(SceneExposureTest, BrighterSamplesStayBrighterOrEqual) {
    for (double stops = -14; stops <= 14; stops += 0.37) {
        const Samples samples = exposedRamp(stops);
        EXPECT_TRUE(std::is_sorted(samples.begin(), samples.end())) << stops;
    }
}

TEST(SceneExposureTest, MoreStopsAreNeverDarker) {
    Samples darker = exposedRamp(-14);
    for (double stops = -14; stops <= 14; stops += 0.03) {
        const Samples brighter = exposedRamp(stops);
        for (std::size_t i = 0; i < brighter.size(); ++i)
            ASSERT_GE(brighter[i], darker[i]) << stops << " " << i;
        darker = brighter;
    }
}

TEST(SceneExposureTest, EndsAtBlack) {
    for (const double stops : {-40.0, -1e300, -std::numeric_limits<double>::infinity()})
        EXPECT_EQ(exposedRamp(stops), Samples(256, 0)) << stops;
}

TEST(SceneExposureTest, EndsAtWhiteForAllButBlack) {
    Samples expected(256, 255);
    expected[0] = 0;
    for (const double stops : {40.0, 1e300, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(exposedRamp(stops), expected) << stops;
}

TEST(SceneExposureTest, IgnoresWhatIsNoNumber) {
    EXPECT_EQ(exposedRamp(std::numeric_limits<double>::quiet_NaN()), ramp());
}

TEST(SceneExposureTest, TakesAnEmptyPicture) {
    Samples none;
    SceneExposure(3).apply(none);
    EXPECT_TRUE(none.empty());
}

} // namespace
} // namespace Platform::Simulated
