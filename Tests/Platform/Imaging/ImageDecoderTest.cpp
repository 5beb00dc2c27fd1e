#include "Platform/Imaging/ImageDecoder.h"

#include "Platform/Imaging/PngEncoder.h"
#include "Tests/Platform/Imaging/ClaimedSizes.h"
#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/RaisedError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace Platform::Imaging {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

const std::string neitherText = "80004005 The data is neither a PNG nor a JPEG picture";

Bytes decodedPixels(const PngRecipe& recipe) { return decodeImage(writePng(recipe)).pixels; }

int largestDifference(const Bytes& a, const Bytes& b) {
    int largest = a.size() == b.size() ? 0 : 256;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

TEST(ImageDecoderTest, ReadsPngInRgb) {
    const RgbImage image = noisyPicture(5, 4);
    const RgbImage decoded = decodeImage(writePng({.width = 5, .height = 4, .rows = image.pixels}));
    EXPECT_EQ(decoded.width, 5U);
    EXPECT_EQ(decoded.height, 4U);
    EXPECT_EQ(decoded.pixels, image.pixels);
}

TEST(ImageDecoderTest, ReadsInterlacedPng) {
    const RgbImage image = noisyPicture(19, 23);
    EXPECT_EQ(decodedPixels({.width = 19, .height = 23, .interlaced = true, .rows = image.pixels}), image.pixels);
}

TEST(ImageDecoderTest, ReadsPngWithAPaletteAndIgnoresItsAlpha) {
    EXPECT_THAT(decodedPixels({.width = 3,
                               .height = 1,
                               .colourType = PNG_COLOR_TYPE_PALETTE,
                               .rows = {2, 0, 1},
                               .palette = {1, 2, 3, 4, 5, 6, 7, 8, 9},
                               .paletteAlpha = {0, 128}}),
                ElementsAre(7, 8, 9, 1, 2, 3, 4, 5, 6));
}

TEST(ImageDecoderTest, ReadsPngWithAPackedPalette) {
    EXPECT_THAT(decodedPixels({.width = 4,
                               .height = 1,
                               .bitDepth = 2,
                               .colourType = PNG_COLOR_TYPE_PALETTE,
                               .rows = {0b11100100},
                               .palette = {10, 0, 0, 20, 0, 0, 30, 0, 0, 40, 0, 0}}),
                ElementsAre(40, 0, 0, 30, 0, 0, 20, 0, 0, 10, 0, 0));
}

TEST(ImageDecoderTest, TakesAnIndexBeyondThePaletteOfPngAsBlack) {
    EXPECT_THAT(
        decodedPixels(
            {.width = 1, .height = 1, .colourType = PNG_COLOR_TYPE_PALETTE, .rows = {200}, .palette = {1, 2, 3}}),
        ElementsAre(0, 0, 0));
}

TEST(ImageDecoderTest, SpreadsGreyPngOfAnyDepthOverTheWholeRange) {
    const auto grey = [](int depth, Bytes rows, std::uint32_t width) {
        return decodedPixels({.width = width,
                              .height = 1,
                              .bitDepth = depth,
                              .colourType = PNG_COLOR_TYPE_GRAY,
                              .rows = std::move(rows)});
    };
    EXPECT_THAT(grey(1, {0b01000000}, 2), ElementsAre(0, 0, 0, 255, 255, 255));
    EXPECT_THAT(grey(2, {0b01100000}, 2), ElementsAre(85, 85, 85, 170, 170, 170));
    EXPECT_THAT(grey(4, {0x7F}, 2), ElementsAre(119, 119, 119, 255, 255, 255));
    EXPECT_THAT(grey(8, {77}, 1), ElementsAre(77, 77, 77));
}

TEST(ImageDecoderTest, RoundsSixteenBitSamplesOfPng) {
    // In 255 parts of the range, 0x00FF is 0.992, 0xFF7E is 254.498 and 0xFF81 is 254.510.
    EXPECT_THAT(decodedPixels({.width = 1,
                               .height = 1,
                               .bitDepth = 16,
                               .colourType = PNG_COLOR_TYPE_RGB,
                               .rows = {0x00, 0xFF, 0xFF, 0x7E, 0xFF, 0x81}}),
                ElementsAre(1, 254, 255));
    EXPECT_THAT(decodedPixels(
                    {.width = 1, .height = 1, .bitDepth = 16, .colourType = PNG_COLOR_TYPE_GRAY, .rows = {0x80, 0x80}}),
                ElementsAre(128, 128, 128));
}

TEST(ImageDecoderTest, DropsTheAlphaOfPngAndKeepsTheColoursBelow) {
    EXPECT_THAT(
        decodedPixels(
            {.width = 2, .height = 1, .colourType = PNG_COLOR_TYPE_RGB_ALPHA, .rows = {9, 8, 7, 0, 6, 5, 4, 128}}),
        ElementsAre(9, 8, 7, 6, 5, 4));
    EXPECT_THAT(
        decodedPixels({.width = 2, .height = 1, .colourType = PNG_COLOR_TYPE_GRAY_ALPHA, .rows = {50, 0, 60, 255}}),
        ElementsAre(50, 50, 50, 60, 60, 60));
    EXPECT_THAT(decodedPixels({.width = 1,
                               .height = 1,
                               .bitDepth = 16,
                               .colourType = PNG_COLOR_TYPE_RGB_ALPHA,
                               .rows = {10, 10, 20, 20, 30, 30, 0, 0}}),
                ElementsAre(10, 20, 30));
}

TEST(ImageDecoderTest, IgnoresTheGammaOfPng) {
    EXPECT_THAT(decodedPixels({.width = 1, .height = 1, .rows = {30, 60, 120}, .gamma = 1.0}),
                ElementsAre(30, 60, 120));
}

TEST(ImageDecoderTest, ReadsJpegInColourWithAnySubsampling) {
    const RgbImage image = smoothPicture(67, 45);
    for (const int subsampling : {TJSAMP_444, TJSAMP_422, TJSAMP_420, TJSAMP_440, TJSAMP_411}) {
        const RgbImage decoded = decodeImage(writeJpeg(image, subsampling));
        EXPECT_EQ(decoded.width, 67U);
        EXPECT_EQ(decoded.height, 45U);
        EXPECT_LE(largestDifference(decoded.pixels, image.pixels), 8) << subsampling;
    }
}

TEST(ImageDecoderTest, ReadsProgressiveJpegLikeASequentialOne) {
    const RgbImage image = noisyPicture(40, 24);
    EXPECT_EQ(decodeImage(writeJpeg(image, TJSAMP_420, TJFLAG_PROGRESSIVE)).pixels,
              decodeImage(writeJpeg(image, TJSAMP_420)).pixels);
}

TEST(ImageDecoderTest, ReadsGreyJpeg) {
    RgbImage image{32, 16, {}};
    for (std::size_t i = 0; i < std::size_t{32} * 16; ++i)
        image.pixels.insert(image.pixels.end(), 3, static_cast<std::uint8_t>(40 + i % 32 * 5));
    const Bytes decoded = decodeImage(writeJpeg(image, TJSAMP_GRAY)).pixels;
    EXPECT_LE(largestDifference(decoded, image.pixels), 6);
    for (std::size_t i = 0; i < decoded.size(); i += 3)
        EXPECT_TRUE(decoded[i] == decoded[i + 1] && decoded[i] == decoded[i + 2]);
}

TEST(ImageDecoderTest, RefusesJpegInCmyk) {
    const Bytes file = writeCmykJpeg(8, 8, Bytes(8 * 8 * 4, 100));
    EXPECT_EQ(raisedBy([&] { decodeImage(file); }), "80004005 JPEG: pictures in CMYK are not supported");
}

TEST(ImageDecoderTest, ReadsTheSizeFromTheHeadAlone) {
    Bytes png = encodePng(noisyPicture(90, 70));
    png.resize(png.size() / 2);
    EXPECT_EQ(decodeImageSize(png).width, 90U);
    EXPECT_EQ(decodeImageSize(png).height, 70U);
    Bytes jpeg = writeJpeg(noisyPicture(50, 60), TJSAMP_420);
    jpeg.resize(jpeg.size() - 200);
    EXPECT_EQ(decodeImageSize(jpeg).width, 50U);
    EXPECT_EQ(decodeImageSize(jpeg).height, 60U);
}

TEST(ImageDecoderTest, RefusesWhatIsNeitherPngNorJpeg) {
    for (const Bytes& bytes : {Bytes{}, Bytes{0xFF}, Bytes{'G', 'I', 'F', '8', '9', 'a'}, Bytes(100, 0)}) {
        EXPECT_EQ(raisedBy([&] { decodeImage(bytes); }), neitherText);
        EXPECT_EQ(raisedBy([&] { decodeImageSize(bytes); }), neitherText);
    }
}

TEST(ImageDecoderTest, RefusesSizesBeyondTheLimits) {
    EXPECT_EQ(raisedBy([] { decodeImage(pngOfClaimedSize(40000, 40000)); }),
              "80070057 PNG: a picture of 40000x40000 is not supported");
    EXPECT_EQ(raisedBy([] { decodeImageSize(pngOfClaimedSize(0x7FFFFFFF, 1)); }),
              "80070057 PNG: a picture of 2147483647x1 is not supported");
    EXPECT_EQ(raisedBy([] { decodeImage(jpegOfClaimedSize(65500, 65500)); }),
              "80070057 JPEG: a picture of 65500x65500 is not supported");
    EXPECT_THAT(raisedBy([] { decodeImage(pngOfClaimedSize(0, 5)); }), StartsWith("80004005 PNG: "));
    EXPECT_EQ(decodeImageSize(pngOfClaimedSize(maxImageSide, 3051)).width, maxImageSide);
}

TEST(ImageDecoderTest, RefusesPngThatEndsEarlyAnywhere) {
    const Bytes file = encodePng(noisyPicture(6, 5));
    for (std::size_t length = 0; length < file.size(); ++length) {
        const Bytes part(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(raisedBy([&] { decodeImage(part); }), length < 8 ? neitherText : "80004005 PNG: the data ends early")
            << length;
    }
}

TEST(ImageDecoderTest, RefusesJpegThatEndsEarlyAnywhere) {
    for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
        const Bytes file = writeJpeg(noisyPicture(24, 20), TJSAMP_420, flags);
        for (std::size_t length = 0; length < file.size(); ++length) {
            const Bytes part(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_THAT(raisedBy([&] { decodeImage(part); }), StartsWith(length < 3 ? neitherText : "80004005 JPEG: "))
                << length;
        }
    }
}

TEST(ImageDecoderTest, RefusesJpegWithoutAPicture) {
    EXPECT_EQ(raisedBy([] { decodeImage(Bytes{0xFF, 0xD8, 0xFF, 0xD9}); }), "80004005 JPEG: the data holds no picture");
}

TEST(ImageDecoderTest, RefusesPngWithAnyByteDamaged) {
    const Bytes file = encodePng(noisyPicture(6, 5));
    for (std::size_t i = 0; i < file.size(); ++i)
        for (const std::uint8_t damage : {0x01, 0x20, 0x80, 0xFF}) {
            Bytes damaged = file;
            damaged[i] = static_cast<std::uint8_t>(damaged[i] ^ damage);
            EXPECT_THAT(raisedBy([&] { decodeImage(damaged); }), StartsWith("80004005 "))
                << i << " " << static_cast<int>(damage);
        }
}

TEST(ImageDecoderTest, DamagedJpegIsRefusedOrWhole) {
    std::minstd_rand random(7);
    int refused = 0;
    for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
        const Bytes file = writeJpeg(noisyPicture(24, 20), TJSAMP_420, flags);
        for (int round = 0; round < 3000; ++round) {
            Bytes damaged = file;
            for (unsigned flips = 1 + random() % 3; flips > 0; --flips)
                damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random() >> 8);
            try {
                const RgbImage image = decodeImage(damaged);
                ASSERT_EQ(image.pixels.size(), std::size_t{3} * image.width * image.height);
            } catch (const winrt::hresult_error& error) {
                ASSERT_FALSE(error.message().empty());
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 100);
}

TEST(ImageDecoderTest, RandomBytesBehindASignatureAreRefused) {
    std::minstd_rand random(11);
    for (const Bytes& signature : {Bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}, Bytes{0xFF, 0xD8, 0xFF}}) {
        for (int round = 0; round < 500; ++round) {
            Bytes bytes = signature;
            for (unsigned count = random() % 300; count > 0; --count)
                bytes.push_back(static_cast<std::uint8_t>(random() >> 8));
            EXPECT_THAT(raisedBy([&] { decodeImage(bytes); }), StartsWith("80004005 "));
        }
    }
}

} // namespace
} // namespace Platform::Imaging
