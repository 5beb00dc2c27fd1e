#include "Platform/Imaging/Canvas.h"

#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/RaisedError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Platform::Imaging {
namespace {

constexpr Colour whiteColour{255, 255, 255};

Colour pixelAt(const RgbImage& image, int x, int y) {
    const std::size_t offset = 3 * (static_cast<std::size_t>(y) * image.width + static_cast<std::size_t>(x));
    return {image.pixels.at(offset), image.pixels.at(offset + 1), image.pixels.at(offset + 2)};
}

TEST(CanvasTest, IsBlackAtFirst) {
    const RgbImage image = Canvas(5, 3).toImage();
    EXPECT_EQ(image.width, 5U);
    EXPECT_EQ(image.height, 3U);
    EXPECT_EQ(image.pixels, Bytes(45, 0));
}

TEST(CanvasTest, FillsExactlyTheRectangleWithExactlyTheColour) {
    Canvas canvas(9, 7);
    canvas.fill({2, 1, 4, 3}, {1, 128, 254});
    const RgbImage image = canvas.toImage();
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) {
            const bool isInside = x >= 2 && x < 6 && y >= 1 && y < 4;
            EXPECT_EQ(pixelAt(image, x, y), (isInside ? Colour{1, 128, 254} : Colour{})) << x << "," << y;
        }
}

TEST(CanvasTest, KeepsEverySampleValue) {
    Canvas canvas(256, 1);
    for (int i = 0; i < 256; ++i) {
        const auto sample = static_cast<std::uint8_t>(i);
        canvas.fill({i, 0, 1, 1}, {sample, sample, sample});
    }
    const RgbImage image = canvas.toImage();
    for (int i = 0; i < 256; ++i)
        EXPECT_EQ(pixelAt(image, i, 0).green, i);
}

TEST(CanvasTest, DoesNotDrawWhatIsEmptyOrOutside) {
    Canvas canvas(4, 4);
    canvas.fill({1, 1, 0, 2}, whiteColour);
    canvas.fill({3, 3, -2, -2}, whiteColour);
    canvas.fill({40, 40, 5, 5}, whiteColour);
    canvas.fillGradient({1, 1, -3, 2}, {whiteColour, whiteColour});
    canvas.fillPolygon({}, whiteColour);
    canvas.fillCircle({2, 2}, -1, whiteColour);
    canvas.strokeCircle({2, 2}, 0, 1, whiteColour);
    EXPECT_EQ(canvas.toImage().pixels, Bytes(48, 0));
}

TEST(CanvasTest, GradientRunsFromTheFirstColourToTheLast) {
    Canvas canvas(256, 2);
    canvas.fillGradient({0, 0, 256, 2}, {{}, whiteColour});
    const RgbImage image = canvas.toImage();
    EXPECT_EQ(pixelAt(image, 0, 1), Colour{});
    EXPECT_EQ(pixelAt(image, 255, 1), whiteColour);
    for (int x = 1; x < 256; ++x)
        EXPECT_GE(pixelAt(image, x, 0).red, pixelAt(image, x - 1, 0).red);
}

TEST(CanvasTest, TextStaysWithinItsArea) {
    Canvas canvas(200, 60);
    const Rectangle area{40, 10, 60, 40};
    canvas.drawText(area, {40, 40}, 30, "WWWWWWWWWW", whiteColour);
    const RgbImage image = canvas.toImage();
    int inside = 0;
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 200; ++x) {
            if (pixelAt(image, x, y) == Colour{})
                continue;
            ASSERT_TRUE(x >= 40 && x < 100 && y >= 10 && y < 50) << x << "," << y;
            ++inside;
        }
    EXPECT_GT(inside, 100);
}

TEST(CanvasTest, MalformedTextIsNotDrawnAndSpoilsNothing) {
    Canvas canvas(100, 40);
    canvas.drawText({0, 0, 100, 40}, {5, 30}, 20, "\xC3(", whiteColour);
    EXPECT_EQ(canvas.toImage().pixels, Bytes(std::size_t{3} * 100 * 40, 0));
    EXPECT_EQ(canvas.textWidth(20, "\xFF\xFE"), 0);
    EXPECT_GT(canvas.textWidth(20, "text"), 10);
    canvas.drawText({0, 0, 100, 40}, {5, 30}, 20, "text", whiteColour);
    canvas.fill({0, 0, 1, 1}, whiteColour);
    const RgbImage image = canvas.toImage();
    EXPECT_EQ(pixelAt(image, 0, 0), whiteColour);
    EXPECT_GT(std::count(image.pixels.begin(), image.pixels.end(), 255), 30);
}

TEST(CanvasTest, RefusesSizesThatCannotBeDrawnOn) {
    EXPECT_EQ(raisedBy([] { Canvas(0, 5); }), "80070057 Drawing: a picture of 0x5 is not supported");
    EXPECT_EQ(raisedBy([] { Canvas(5, 32768); }), "80070057 Drawing: a picture of 5x32768 is not supported");
}

} // namespace
} // namespace Platform::Imaging
