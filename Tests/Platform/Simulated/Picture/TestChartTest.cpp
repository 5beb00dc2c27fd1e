#include "Platform/Simulated/Picture/TestChart.h"

#include "Platform/Interface/HresultError.h"
#include "Platform/Simulated/Picture/ChartCaption.h"
#include "Platform/Simulated/Picture/ChartLayout.h"
#include "Platform/Simulated/Picture/SceneExposure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <thread>
#include <utility>

namespace Platform::Simulated {
namespace {

using Imaging::Colour;
using Imaging::Rectangle;
using Imaging::RgbImage;
using Size = std::pair<std::uint32_t, std::uint32_t>;

const std::vector<Size> commonSizes{{1920, 1080}, {640, 480}, {320, 240}, {1080, 1920}, {1279, 721}};

const ChartCaption plainCaption{"Camera", -6.0, 1, "12:00:00"};

Colour pixelAt(const RgbImage& image, int x, int y) {
    const std::size_t offset = 3 * (static_cast<std::size_t>(y) * image.width + static_cast<std::size_t>(x));
    return {image.pixels.at(offset), image.pixels.at(offset + 1), image.pixels.at(offset + 2)};
}

Colour middleOf(const RgbImage& image, const Rectangle& area) {
    return pixelAt(image, area.x + area.width / 2, area.y + area.height / 2);
}

bool overlap(const Rectangle& a, const Rectangle& b) {
    return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
}

bool isWithin(const Rectangle& inner, const Rectangle& outer) {
    return inner.x >= outer.x && inner.y >= outer.y && inner.right() <= outer.right() &&
           inner.bottom() <= outer.bottom();
}

/// The picture with the strip over its lowest rows.
RgbImage captioned(RgbImage image, const ChartCaption& caption) {
    const RgbImage strip = drawCaption(image.width, image.height, caption);
    EXPECT_EQ(strip.height, static_cast<std::uint32_t>(captionArea(image.width, image.height).height));
    std::ranges::copy(strip.pixels, image.pixels.end() - static_cast<std::ptrdiff_t>(strip.pixels.size()));
    return image;
}

RgbImage flatPicture(std::uint32_t width, std::uint32_t height, std::uint8_t sample) {
    return {width, height, std::vector<std::uint8_t>(std::size_t{3} * width * height, sample)};
}

/// The caption strip's rows of a picture.
std::vector<std::uint8_t> stripOf(const RgbImage& image) {
    const Rectangle strip = captionArea(image.width, image.height);
    return {image.pixels.begin() + std::ptrdiff_t{3} * image.width * strip.y, image.pixels.end()};
}

TEST(TestChartTest, HasTheSizeAskedForDownToOnePixel) {
    for (const auto& [width, height] :
         {Size{1, 1}, Size{2, 1}, Size{16, 16}, Size{17, 3}, Size{3, 200}, Size{64, 48}, Size{95, 96}, Size{96, 96},
          Size{97, 130}, Size{2000, 8}, Size{320, 240}, Size{640, 360}}) {
        const RgbImage image = drawTestChart(width, height);
        EXPECT_EQ(image.width, width);
        EXPECT_EQ(image.height, height);
        EXPECT_EQ(image.pixels.size(), std::size_t{3} * width * height);
    }
}

TEST(TestChartTest, DrawsEverySmallSizeWithItsPatchesInside) {
    for (std::uint32_t width = 1; width < 130; width += 3)
        for (std::uint32_t height = 1; height < 130; height += 4) {
            const RgbImage image = captioned(drawTestChart(width, height), plainCaption);
            const Rectangle whole{0, 0, static_cast<int>(width), static_cast<int>(height)};
            for (const ChartPatch& patch : chartPatches(width, height)) {
                ASSERT_FALSE(patch.area.isEmpty());
                ASSERT_TRUE(isWithin(patch.area, whole)) << width << "x" << height;
            }
        }
}

TEST(TestChartTest, RefusesSizesThatCannotBeDrawn) {
    EXPECT_THROW(drawTestChart(0, 10), winrt::hresult_error);
    EXPECT_THROW(drawTestChart(10, 0), winrt::hresult_error);
    EXPECT_THROW(drawTestChart(32768, 10), winrt::hresult_error);
    EXPECT_THROW(drawTestChart(10001, 10000), winrt::hresult_error) << "more memory than a still may take";
}

TEST(TestChartTest, IsTheSamePictureEachTime) {
    EXPECT_TRUE(drawTestChart(640, 480).pixels == drawTestChart(640, 480).pixels);
}

TEST(TestChartTest, PatchesHaveExactlyTheirColourInTheMiddle) {
    for (const auto& [width, height] : commonSizes) {
        const RgbImage image = drawTestChart(width, height);
        for (const ChartPatch& patch : chartPatches(width, height))
            EXPECT_EQ(middleOf(image, patch.area), patch.colour)
                << width << "x" << height << " at " << patch.area.x << "," << patch.area.y;
    }
}

TEST(TestChartTest, ColourPatchesAreExactUpToTheirEdges) {
    const RgbImage image = drawTestChart(640, 480);
    const std::vector<ChartPatch> patches = chartPatches(640, 480);
    constexpr std::size_t colours = 30;
    for (std::size_t i = 0; i < colours; ++i) {
        const Rectangle& area = patches.at(i).area;
        for (int y = area.y; y < area.bottom(); ++y)
            for (int x = area.x; x < area.right(); ++x)
                ASSERT_EQ(pixelAt(image, x, y), patches[i].colour) << i;
    }
}

TEST(TestChartTest, HasThePrimariesTheirComplementsAndAllPatchesDifferent) {
    std::vector<Colour> colours;
    for (const ChartPatch& patch : chartPatches(640, 480)) {
        EXPECT_THAT(colours, testing::Not(testing::Contains(patch.colour)));
        colours.push_back(patch.colour);
    }
    EXPECT_EQ(colours.size(), 44U);
    EXPECT_THAT(colours, testing::IsSupersetOf({Colour{255, 0, 0}, Colour{0, 255, 0}, Colour{0, 0, 255},
                                                Colour{0, 255, 255}, Colour{255, 0, 255}, Colour{255, 255, 0},
                                                Colour{255, 255, 255}, Colour{0, 0, 0}}));
}

TEST(TestChartTest, PatchesLieApartAndAboveTheCaption) {
    for (const auto& [width, height] : commonSizes) {
        const std::vector<ChartPatch> patches = chartPatches(width, height);
        const Rectangle strip = captionArea(width, height);
        for (std::size_t i = 0; i < patches.size(); ++i) {
            EXPECT_TRUE(isWithin(patches[i].area, {0, 0, static_cast<int>(width), strip.y}));
            for (std::size_t k = 0; k < i; ++k)
                EXPECT_FALSE(overlap(patches[i].area, patches[k].area)) << i << " " << k;
        }
    }
}

TEST(TestChartTest, GreyStepsAreHalfAStopApart) {
    const std::vector<ChartPatch> patches = chartPatches(640, 480);
    const std::vector<ChartPatch> wedge(patches.end() - 14, patches.end());
    RgbImage image = drawTestChart(640, 480);
    SceneExposure(-0.5).apply(image.pixels);
    for (std::size_t i = 0; i + 2 < wedge.size(); ++i)
        EXPECT_NEAR(middleOf(image, wedge[i].area).red, wedge[i + 1].colour.red, 1) << i;
    EXPECT_EQ(wedge.front().colour, (Colour{255, 255, 255}));
    EXPECT_EQ(wedge.back().colour, Colour{});
}

TEST(TestChartTest, HasLinesOfASinglePixel) {
    const RgbImage image = drawTestChart(640, 480);
    const auto lineIsFoundBy = [&](int dx, int dy) {
        for (int y = 3; y < 477; ++y)
            for (int x = 3; x < 637; ++x) {
                bool alternates = true;
                for (int step = 0; step < 12 && alternates && x + step * dx < 640 && y + step * dy < 480; ++step) {
                    const Colour expected = step % 2 ? Colour{255, 255, 255} : Colour{};
                    alternates = pixelAt(image, x + step * dx, y + step * dy) == expected;
                }
                if (alternates)
                    return true;
            }
        return false;
    };
    EXPECT_TRUE(lineIsFoundBy(1, 0));
    EXPECT_TRUE(lineIsFoundBy(0, 1));
}

TEST(TestChartTest, HasACrossAtItsExactCentre) {
    for (const auto& [width, height] : commonSizes) {
        const RgbImage image = drawTestChart(width, height);
        const int x = static_cast<int>(width);
        const int y = static_cast<int>(height);
        EXPECT_EQ(pixelAt(image, x / 2, y / 2), Colour{});
        for (int off = 0; off < 6; ++off) {
            // Mirrored in the centre, the picture is the same there.
            EXPECT_EQ(pixelAt(image, x / 2 + off, y / 2), pixelAt(image, (x - 1) / 2 - off, y / 2));
            EXPECT_EQ(pixelAt(image, x / 2, y / 2 + off), pixelAt(image, x / 2, (y - 1) / 2 - off));
        }
    }
}

TEST(TestChartTest, IsDrawnAlikeByManyThreadsAtOnce) {
    const ChartCaption caption{"K\xC3\xA4mera \xCE\xA9 \xD0\x96", -6.0, 7, "12:00:00"};
    const RgbImage expected = captioned(drawTestChart(320, 240), caption);
    std::vector<RgbImage> drawn(8);
    std::vector<std::thread> threads;
    for (RgbImage& image : drawn)
        threads.emplace_back([&image, &caption] {
            for (int round = 0; round < 4; ++round)
                image = captioned(drawTestChart(320, 240), caption);
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const RgbImage& image : drawn)
        EXPECT_TRUE(image.pixels == expected.pixels);
}

TEST(ChartCaptionTest, FillsTheWidthAtTheLowerEdge) {
    for (const auto& [width, height] : commonSizes) {
        const RgbImage strip = drawCaption(width, height, plainCaption);
        const Rectangle area = captionArea(width, height);
        EXPECT_EQ(area.x, 0);
        EXPECT_EQ(area.bottom(), static_cast<int>(height));
        EXPECT_EQ(strip.width, width);
        EXPECT_EQ(static_cast<int>(strip.height), area.height);
    }
}

TEST(ChartCaptionTest, IsBrightOnDark) {
    const std::vector<std::uint8_t> strip = stripOf(captioned(flatPicture(320, 240, 128), plainCaption));
    EXPECT_GT(std::count_if(strip.begin(), strip.end(), [](int sample) { return sample > 200; }), 300);
    EXPECT_GT(std::count_if(strip.begin(), strip.end(), [](int sample) { return sample < 30; }),
              static_cast<std::ptrdiff_t>(strip.size() / 2));
}

TEST(ChartCaptionTest, ShowsEachOfItsParts) {
    const RgbImage picture = flatPicture(640, 480, 128);
    const auto strip = [&picture](const ChartCaption& caption) { return stripOf(captioned(picture, caption)); };
    const auto original = strip(plainCaption);
    EXPECT_EQ(strip({"Camera", -6.0, 1, "12:00:00"}), original);
    EXPECT_NE(strip({"Camers", -6.0, 1, "12:00:00"}), original);
    EXPECT_NE(strip({"Camera", -6.25, 1, "12:00:00"}), original);
    EXPECT_NE(strip({"Camera", std::nullopt, 1, "12:00:00"}), original);
    EXPECT_NE(strip({"Camera", -6.0, 2, "12:00:00"}), original);
    EXPECT_NE(strip({"Camera", -6.0, 1, "12:00:01"}), original);
}

TEST(ChartCaptionTest, TellsScriptsApart) {
    const RgbImage picture = flatPicture(640, 480, 128);
    EXPECT_NE(stripOf(captioned(picture, {"\xCE\xA9", -6.0, 1, ""})),
              stripOf(captioned(picture, {"\xD0\x96", -6.0, 1, ""})));
}

TEST(ChartCaptionTest, TakesAnyTextAndNumber) {
    const auto height = static_cast<std::uint32_t>(captionArea(320, 240).height);
    for (const ChartCaption& caption :
         {ChartCaption{std::string(5000, 'W'), -1000.0, 18446744073709551615U, std::string(5000, 'M')},
          ChartCaption{"\xFF\xFE", 1e300, 0, "\xE2\x28"},
          ChartCaption{"", std::numeric_limits<double>::infinity(), 0, ""},
          ChartCaption{"", std::numeric_limits<double>::quiet_NaN(), 0, ""}})
        EXPECT_EQ(drawCaption(320, 240, caption).height, height);
}

TEST(ChartCaptionTest, MalformedNameLeavesTheRestLegible) {
    const RgbImage picture = flatPicture(640, 480, 128);
    EXPECT_EQ(stripOf(captioned(picture, {"\xC3(", -6.0, 1, "12:00:00"})),
              stripOf(captioned(picture, {"", -6.0, 1, "12:00:00"})));
}

TEST(ChartCaptionTest, IsLeftOutWhereThereIsNoRoom) {
    for (const auto& [width, height] : {Size{16, 16}, Size{64, 48}, Size{95, 500}, Size{500, 95}}) {
        EXPECT_TRUE(captionArea(width, height).isEmpty());
        const RgbImage chart = drawTestChart(width, height);
        EXPECT_TRUE(captioned(chart, plainCaption).pixels == chart.pixels);
    }
}

/// Draws in a process that finds no font at all; ends it with 0 when there is a picture.
[[noreturn]] void drawWithoutFonts() {
    setenv("FONTCONFIG_FILE", "/dev/null", 1);
    const RgbImage image = captioned(drawTestChart(320, 240), plainCaption);
    std::exit(image.pixels.size() == std::size_t{3} * 320 * 240 ? 0 : 1);
}

TEST(ChartCaptionDeathTest, NeedsNoInstalledFont) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(drawWithoutFonts(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace Platform::Simulated
