#include "Tools/CameraHub/Picture/Histogram.h"

#include "Tests/Tools/CameraHub/Pictures.h"

#include <gtest/gtest.h>

using namespace CommandLine;

TEST(HistogramTest, APixelIsTooBrightIfOneOfItsColoursIsAtTheEnd) {
    const Histogram histogram({4, 1, {255, 0, 0, 254, 254, 254, 255, 255, 255, 0, 0, 0}});
    EXPECT_EQ(histogram.tooBright(), 0.5);
}

TEST(HistogramTest, APixelIsTooDarkIfAllOfItsColoursAreBlack) {
    const Histogram histogram({4, 1, {255, 0, 0, 0, 0, 1, 0, 0, 0, 9, 9, 9}});
    EXPECT_EQ(histogram.tooDark(), 0.25);
}

TEST(HistogramTest, ItsLineGoesFromBlackToWhite) {
    EXPECT_EQ(Histogram(uniform(3, 3, 0)).line(4), "\u2588   ");
    EXPECT_EQ(Histogram(uniform(3, 3, 128)).line(4), "  \u2588 ");
    EXPECT_EQ(Histogram(uniform(3, 3, 255)).line(4), "   \u2588");
    EXPECT_EQ(Histogram(uniform(3, 3, 255)).line(1), "\u2588");
}

TEST(HistogramTest, AColumnIsAsHighAsTheRootOfItsPixels) {
    RgbPicture picture = uniform(17, 1, 255);
    std::fill_n(picture.samples.begin(), 3, std::uint8_t{0}); // 1 of 17, beside 16
    EXPECT_EQ(Histogram(picture).line(2), "\u2582\u2588");
}

TEST(HistogramTest, ASingleOddPixelIsSeen) {
    RgbPicture picture = uniform(1000, 1000, 255);
    std::fill_n(picture.samples.begin(), 3, std::uint8_t{0});
    EXPECT_EQ(Histogram(picture).line(2), "\u2581\u2588");
}

TEST(HistogramTest, SharesAreWrittenAsExactlyAsTheyMatter) {
    EXPECT_EQ(shareText(0), "0 %");
    EXPECT_EQ(shareText(0.00001), "< 0.01 %");
    EXPECT_EQ(shareText(0.0031), "0.31 %");
    EXPECT_EQ(shareText(0.123), "12 %");
    EXPECT_EQ(shareText(1), "100 %");
}
