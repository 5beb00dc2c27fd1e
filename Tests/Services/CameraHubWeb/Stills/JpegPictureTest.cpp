#include "Services/CameraHubWeb/Stills/JpegPicture.h"

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Tests/Support/FailingLargeAllocations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <future>

namespace CameraHubWeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Colour = std::array<std::uint8_t, 3>;
using Platform::Imaging::decodeImage;
using Platform::Imaging::encodePng;
using Platform::Imaging::RgbImage;

/// Each pixel's colour by its place.
RgbImage picture(std::uint32_t width, std::uint32_t height,
                 const std::function<Colour(std::uint32_t x, std::uint32_t y)>& colour) {
    RgbImage image{width, height, {}};
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            const Colour pixel = colour(x, y);
            image.pixels.insert(image.pixels.end(), pixel.begin(), pixel.end());
        }
    return image;
}

RgbImage flat(std::uint32_t width, std::uint32_t height, Colour colour) {
    return picture(width, height, [colour](auto, auto) { return colour; });
}

/// Red from left to right, green from top to bottom.
RgbImage smooth(std::uint32_t width, std::uint32_t height) {
    return picture(width, height, [=](std::uint32_t x, std::uint32_t y) {
        return Colour{static_cast<std::uint8_t>(255 * x / width), static_cast<std::uint8_t>(255 * y / height), 90};
    });
}

RgbImage throughJpeg(const RgbImage& image, std::optional<int> width = {}, int quality = 95) {
    return decodeImage(encodeJpeg(encodePng(image), width, quality));
}

/// -1 for pictures of two sizes.
int largestDifference(const RgbImage& one, const RgbImage& other) {
    if (one.width != other.width || one.height != other.height)
        return -1;
    int largest = 0;
    for (std::size_t at = 0; at < one.pixels.size(); ++at)
        largest = std::max(largest, std::abs(one.pixels[at] - other.pixels[at]));
    return largest;
}

MATCHER_P2(IsNear, image, tolerance, "") {
    const int difference = largestDifference(arg, image);
    *result_listener << arg.width << "x" << arg.height << " with a difference of " << difference;
    return difference >= 0 && difference <= tolerance;
}

TEST(JpegPictureTest, TheSizeIsThatOfTheHead) {
    Bytes png = encodePng(smooth(123, 45));
    png.resize(60); // the head, and hardly more
    const PictureSize size = pngSize(png);
    EXPECT_EQ(size.width, 123);
    EXPECT_EQ(size.height, 45);
}

TEST(JpegPictureTest, ThePictureStaysWhatItIs) {
    EXPECT_THAT(throughJpeg(smooth(640, 480)), IsNear(smooth(640, 480), 8));
}

TEST(JpegPictureTest, ColoursStayWhatTheyAreUpToTheEdgesOfOddSizes) {
    for (const Colour colour : {Colour{255, 0, 0}, Colour{0, 255, 0}, Colour{0, 0, 255}, Colour{255, 255, 255},
                                Colour{0, 0, 0}, Colour{120, 130, 10}})
        for (const auto& [width, height] : {std::pair{1U, 1U}, {2U, 1U}, {1U, 2U}, {16U, 16U}, {17U, 33U}, {101U, 8U}})
            EXPECT_THAT(throughJpeg(flat(width, height, colour)), IsNear(flat(width, height, colour), 8));
}

TEST(JpegPictureTest, AWidthBringsTheHeightInProportion) {
    const Bytes png = encodePng(smooth(320, 181));
    for (const auto& [width, height] : {std::pair{319, 180U}, {160, 91U}, {17, 10U}, {16, 9U}, {1, 1U}}) {
        const RgbImage scaled = decodeImage(encodeJpeg(png, width, 90));
        EXPECT_EQ(scaled.width, width);
        EXPECT_EQ(scaled.height, height);
    }
}

TEST(JpegPictureTest, NoSideBecomesNothing) {
    const RgbImage scaled = throughJpeg(flat(600, 2, {9, 99, 199}), 16);
    EXPECT_THAT(scaled, IsNear(flat(16, 1, {9, 99, 199}), 8));
}

TEST(JpegPictureTest, ItNeverGrows) {
    EXPECT_THAT(throughJpeg(smooth(64, 48), 8192), IsNear(smooth(64, 48), 12));
    EXPECT_THAT(throughJpeg(smooth(64, 48), 64), IsNear(smooth(64, 48), 12));
}

TEST(JpegPictureTest, ASmallerPictureShowsTheSame) {
    for (const int width : {200, 321, 400})
        EXPECT_THAT(throughJpeg(smooth(640, 640), width),
                    IsNear(smooth(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(width)), 10));
}

// Picking single pixels would give black, white, or stripes.
TEST(JpegPictureTest, ScalingDownAverages) {
    const RgbImage chequers = picture(480, 480, [](std::uint32_t x, std::uint32_t y) {
        return (x + y) % 2 != 0 ? Colour{255, 255, 255} : Colour{0, 0, 0};
    });
    for (const int width : {32, 48, 60, 120, 240})
        EXPECT_THAT(throughJpeg(chequers, width).pixels,
                    testing::Each(testing::AllOf(testing::Ge(123), testing::Le(132))))
            << width;
}

TEST(JpegPictureTest, ItIsABaselineFileWithHalfTheColours) {
    const Bytes jpeg = encodeJpeg(encodePng(smooth(64, 48)), {}, 85);
    const Bytes frame{0xFF, 0xC0, 0, 17, 8, 0, 48, 0, 64, 3, 1, 0x22, 0, 2, 0x11, 1, 3, 0x11, 1};
    EXPECT_NE(std::search(jpeg.begin(), jpeg.end(), frame.begin(), frame.end()), jpeg.end());
}

TEST(JpegPictureTest, LessQualityIsASmallerFile) {
    const RgbImage noise = picture(200, 200, [](std::uint32_t x, std::uint32_t y) {
        const auto value = static_cast<std::uint8_t>((x * 2654435761U) ^ (y * 40503U));
        return Colour{value, value, value};
    });
    const Bytes png = encodePng(noise);
    EXPECT_LT(encodeJpeg(png, {}, 1).size(), encodeJpeg(png, {}, 50).size());
    EXPECT_LT(encodeJpeg(png, {}, 50).size(), encodeJpeg(png, {}, 100).size());
}

TEST(JpegPictureTest, WhatIsNoPngFileIsBroken) {
    const Bytes jpeg = encodeJpeg(encodePng(smooth(8, 8)), {}, 85);
    for (const Bytes& bytes : {Bytes{}, Bytes{1, 2, 3}, Bytes(100, 0), jpeg}) {
        EXPECT_THROW(pngSize(bytes), BrokenPicture);
        EXPECT_THROW(encodeJpeg(bytes, {}, 85), BrokenPicture);
    }
}

TEST(JpegPictureTest, WhatEndsEarlyOrIsDamagedIsBroken) {
    const Bytes png = encodePng(smooth(100, 100));
    for (const std::size_t size : {std::size_t{8}, std::size_t{20}, png.size() / 2, png.size() - 13})
        EXPECT_THROW(encodeJpeg(std::span(png).first(size), {}, 85), BrokenPicture) << size;
    Bytes damaged = png;
    damaged[damaged.size() / 2] ^= 0xFFU;
    EXPECT_THROW(encodeJpeg(damaged, {}, 85), BrokenPicture);
    EXPECT_THROW(encodeJpeg(damaged, 16, 85), BrokenPicture);
}

TEST(JpegPictureTest, MemoryThatIsLackingIsABrokenPicture) {
    const Bytes png = encodePng(smooth(1000, 1000));
    for (const std::size_t size : {std::size_t{1'000'000}, std::size_t{2'000'000}}) {
        const FailingLargeAllocations failing(size);
        auto jpeg = std::async(std::launch::async, [&png] { return encodeJpeg(png, {}, 85); });
        EXPECT_THROW(jpeg.get(), BrokenPicture);
    }
}

TEST(JpegPictureTest, ManyThreadsMayAskAtATime) {
    const Bytes png = encodePng(smooth(300, 200));
    const Bytes expected = encodeJpeg(png, 150, 85);
    std::vector<std::future<Bytes>> jpegs;
    for (int count = 0; count < 4; ++count)
        jpegs.push_back(std::async(std::launch::async, [&png] { return encodeJpeg(png, 150, 85); }));
    for (auto& jpeg : jpegs)
        EXPECT_EQ(jpeg.get(), expected);
}

} // namespace
} // namespace CameraHubWeb
