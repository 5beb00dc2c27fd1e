#include "Platform/Imaging/ImageScaler.h"

#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/RaisedError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace Platform::Imaging {
namespace {

RgbImage flatPicture(std::uint32_t width, std::uint32_t height, const Bytes& colour) {
    RgbImage image{width, height, {}};
    for (std::uint32_t i = 0; i < width * height; ++i)
        image.pixels.insert(image.pixels.end(), colour.begin(), colour.end());
    return image;
}

/// Single pixels alternately black and white.
RgbImage chequers(std::uint32_t side) {
    RgbImage image{side, side, {}};
    for (std::uint32_t y = 0; y < side; ++y)
        for (std::uint32_t x = 0; x < side; ++x)
            image.pixels.insert(image.pixels.end(), 3, (x + y) % 2 ? 255 : 0);
    return image;
}

TEST(ImageScalerTest, LeavesAPictureOfTheSameSizeAsItIs) {
    const RgbImage image = noisyPicture(33, 21);
    EXPECT_TRUE(scaleTo(image, 33, 21).pixels == image.pixels);
}

TEST(ImageScalerTest, GivesTheSizeAskedFor) {
    for (const auto& [width, height] : {std::pair{1U, 1U}, {7U, 90U}, {640U, 2U}, {100U, 100U}}) {
        const RgbImage scaled = scaleTo(smoothPicture(50, 40), width, height);
        EXPECT_EQ(scaled.width, width);
        EXPECT_EQ(scaled.height, height);
        EXPECT_EQ(scaled.pixels.size(), std::size_t{3} * width * height);
    }
}

TEST(ImageScalerTest, KeepsAFlatColourAndDoesNotMixItsSamples) {
    const Bytes colour{250, 3, 120};
    for (const auto& [width, height] : {std::pair{1U, 1U}, {5U, 3U}, {13U, 7U}, {31U, 29U}, {40U, 31U}, {200U, 100U}})
        EXPECT_TRUE(scaleTo(flatPicture(40, 30, colour), width, height).pixels ==
                    flatPicture(width, height, colour).pixels)
            << width << "x" << height;
}

TEST(ImageScalerTest, AveragesWholeAreasWhenItShrinks) {
    for (const std::uint32_t side : {8U, 10U, 30U}) {
        const RgbImage scaled = scaleTo(chequers(120), side, side);
        EXPECT_THAT(scaled.pixels, testing::Each(testing::AllOf(testing::Ge(126), testing::Le(129)))) << side;
    }
}

TEST(ImageScalerTest, InterpolatesWhenItEnlarges) {
    const RgbImage scaled = scaleTo({2, 1, {0, 0, 0, 255, 255, 255}}, 16, 1);
    std::vector<int> reds;
    for (std::size_t i = 0; i < scaled.pixels.size(); i += 3)
        reds.push_back(scaled.pixels[i]);
    EXPECT_TRUE(std::is_sorted(reds.begin(), reds.end()));
    EXPECT_EQ(reds.front(), 0);
    EXPECT_GE(reds.back(), 240);
    EXPECT_THAT(reds, testing::Contains(testing::AllOf(testing::Gt(100), testing::Lt(155))));
}

TEST(ImageScalerTest, RefusesEmptyPicturesAndImpossibleSizes) {
    EXPECT_EQ(raisedBy([] { scaleTo({}, 4, 4); }), "80070057 Scaling: 0 bytes are no picture of 0x0");
    EXPECT_EQ(raisedBy([] { scaleTo(smoothPicture(4, 4), 0, 4); }),
              "80070057 Scaling: a picture of 0x4 is not supported");
    EXPECT_EQ(raisedBy([] { scaleTo(smoothPicture(4, 4), 4, 32768); }),
              "80070057 Scaling: a picture of 4x32768 is not supported");
    EXPECT_EQ(raisedBy([] { scaleTo(smoothPicture(4, 4), 10001, 10000); }),
              "80070057 Scaling: a picture of 10001x10000 is not supported");
}

} // namespace
} // namespace Platform::Imaging
