#include "Platform/Imaging/YuvRows.h"

#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Platform/Imaging/Png/InstructionSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <string>
#include <tuple>

namespace Platform::Imaging {
namespace {

/// A frame of samples that are at an end of their range as often as not.
Bytes noisyFrame(const FrameLayout& layout) {
    std::mt19937 random(layout.width * 1000 + layout.height);
    Bytes bytes(frameBytes(layout));
    std::ranges::generate(bytes, [&random] {
        const auto number = random();
        return static_cast<std::uint8_t>(number % 4 == 0 ? 0 : number % 4 == 1 ? 255 : number >> 8);
    });
    return bytes;
}

/// What a frame means, sample by sample and in real numbers.
class Definition {
public:
    Definition(const FrameLayout& layout, const Bytes& bytes)
        : _layout(layout), _bytes(bytes), _order(orderOf(layout.format)) {}

    double colour(int x, int y, std::size_t channel) const {
        const bool full = _layout.range == SampleRange::Full;
        const double luma = full ? sample('Y', x, y) : (sample('Y', x, y) - 16) * 255 / 219.0;
        const double scale = full ? 1 : 255 / 224.0;
        const double u = (interpolated('U', x, y) - 128) * scale;
        const double v = (interpolated('V', x, y) - 128) * scale;
        const double kr = _layout.matrix == YuvMatrix::Bt601   ? 0.299
                          : _layout.matrix == YuvMatrix::Bt709 ? 0.2126
                                                               : 0.2627;
        const double kb = _layout.matrix == YuvMatrix::Bt601   ? 0.114
                          : _layout.matrix == YuvMatrix::Bt709 ? 0.0722
                                                               : 0.0593;
        const double red = luma + 2 * (1 - kr) * v;
        const double blue = luma + 2 * (1 - kb) * u;
        const double green = (luma - kr * red - kb * blue) / (1 - kr - kb);
        return std::clamp(channel == 0 ? red : channel == 1 ? green : blue, 0.0, 255.0);
    }

private:
    static std::string orderOf(FrameFormat format) {
        static const std::map<FrameFormat, std::string> orders{
            {FrameFormat::Yuyv, "YUYV"}, {FrameFormat::Uyvy, "UYVY"}, {FrameFormat::Yvyu, "YVYU"},
            {FrameFormat::Vyuy, "VYUY"}, {FrameFormat::Nv12, "UV"},   {FrameFormat::Nv21, "VU"},
            {FrameFormat::Nv16, "UV"},   {FrameFormat::Yu12, "YUV"},  {FrameFormat::Yv12, "YVU"}};
        return orders.at(format);
    }

    bool isPacked() const { return planeCount(_layout.format) == 1; }
    int chromaWidth() const { return (static_cast<int>(_layout.width) + 1) / 2; }
    int chromaHeight() const { return static_cast<int>(isPacked() ? _layout.height : planeRows(_layout, 1)); }
    bool hasAllRows() const { return chromaHeight() == static_cast<int>(_layout.height); }

    /// At x, y of its own plane, or of the nearest position that this has.
    int sample(char letter, int x, int y) const {
        const std::size_t position = _order.find(letter);
        if (letter != 'Y') {
            x = std::clamp(x, 0, chromaWidth() - 1);
            y = std::clamp(y, 0, chromaHeight() - 1);
        }
        if (isPacked())
            return at(0, y, letter != 'Y' ? 4 * x + static_cast<int>(position) : 2 * x + static_cast<int>(position));
        if (letter == 'Y')
            return at(0, y, x);
        return planeCount(_layout.format) == 2 ? at(1, y, 2 * x + static_cast<int>(position)) : at(position, y, x);
    }

    int at(std::size_t plane, int y, int offset) const {
        std::size_t start = std::size_t{_layout.strides.at(plane)} * static_cast<std::size_t>(y);
        for (std::size_t before = 0; before < plane; ++before)
            start += std::size_t{_layout.strides.at(before)} * planeRows(_layout, before);
        return _bytes.at(start + static_cast<std::size_t>(offset));
    }

    /// A quarter of the way towards the neighbour on the pixel's side, in both directions, in whole numbers.
    int interpolated(char letter, int x, int y) const {
        const int nearX = x / 2;
        const int farX = x % 2 == 0 ? nearX - 1 : nearX + 1;
        const int nearY = hasAllRows() ? y : y / 2;
        const int farY = hasAllRows() ? y : y % 2 == 0 ? nearY - 1 : nearY + 1;
        return (9 * sample(letter, nearX, nearY) + 3 * sample(letter, farX, nearY) + 3 * sample(letter, nearX, farY) +
                sample(letter, farX, farY) + 8) /
               16;
    }

    const FrameLayout _layout;
    const Bytes& _bytes;
    const std::string _order; // of the samples of a packed frame, of a pair, or of the planes
};

using Case = std::tuple<FrameFormat, YuvMatrix, SampleRange>;

class YuvRowsTest : public testing::TestWithParam<Case> {
protected:
    static FrameLayout layoutOf(std::uint32_t width, std::uint32_t height) {
        const auto [format, matrix, range] = GetParam();
        FrameLayout layout{format, width, height, {}, matrix, range};
        for (std::size_t plane = 0; plane < planeCount(format); ++plane)
            layout.strides.at(plane) = planeRowBytes(layout, plane) + static_cast<std::uint32_t>(plane);
        return layout;
    }
};

// Around the sizes of all vectors, and those of half a vector.
constexpr std::array<std::uint32_t, 16> widths{1, 2, 3, 15, 16, 17, 31, 32, 33, 63, 64, 65, 66, 127, 130, 200};

TEST_P(YuvRowsTest, NoSampleIsOffByMoreThanOne) {
    for (const std::uint32_t width : widths)
        for (const std::uint32_t height : {1, 2, 5}) {
            const FrameLayout layout = layoutOf(width, height);
            const Bytes bytes = noisyFrame(layout);
            const Definition definition(layout, bytes);
            const RgbImage image = convertFrame(layout, bytes);
            double worst = 0;
            for (std::size_t i = 0; i < image.pixels.size(); ++i) {
                const int x = static_cast<int>(i / 3 % width);
                const int y = static_cast<int>(i / 3 / width);
                worst = std::max(worst, std::abs(image.pixels[i] - definition.colour(x, y, i % 3)));
            }
            EXPECT_LE(worst, 1) << width << "x" << height;
        }
}

TEST_P(YuvRowsTest, EveryInstructionSetGivesTheSameSamples) {
    for (const std::uint32_t width : widths) {
        const FrameLayout layout = layoutOf(width, 4);
        const Bytes bytes = noisyFrame(layout);
        const RgbImage image = convertFrame(layout, bytes);
        Png::withEachInstructionSet([&](const char* name) {
            EXPECT_TRUE(convertFrame(layout, bytes).pixels == image.pixels) << name << ", width " << width;
        });
    }
}

TEST_P(YuvRowsTest, NothingIsWrittenBehindTheRow) {
    for (const std::uint32_t width : widths) {
        const FrameLayout layout = layoutOf(width, 1);
        const Bytes bytes = noisyFrame(layout);
        Bytes row(std::size_t{3} * width + 200, 0xA5);
        YuvRows(layout, bytes).read(row.data());
        EXPECT_TRUE(std::all_of(row.begin() + 3 * static_cast<std::ptrdiff_t>(width), row.end(),
                                [](std::uint8_t byte) { return byte == 0xA5; }))
            << "width " << width;
    }
}

std::string nameOf(const Case& item) {
    static constexpr std::array formats{"YUYV", "UYVY", "YVYU", "VYUY", "NV12", "NV21", "NV16", "YU12", "YV12"};
    static constexpr std::array matrices{"Bt601", "Bt709", "Bt2020"};
    const auto [format, matrix, range] = item;
    return std::string(formats.at(static_cast<std::size_t>(format))) + matrices.at(static_cast<std::size_t>(matrix)) +
           (range == SampleRange::Full ? "Full" : "Limited");
}

INSTANTIATE_TEST_SUITE_P(EachFormat, YuvRowsTest,
                         testing::Combine(testing::Values(FrameFormat::Yuyv, FrameFormat::Uyvy, FrameFormat::Yvyu,
                                                          FrameFormat::Vyuy, FrameFormat::Nv12, FrameFormat::Nv21,
                                                          FrameFormat::Nv16, FrameFormat::Yu12, FrameFormat::Yv12),
                                          testing::Values(YuvMatrix::Bt601, YuvMatrix::Bt709, YuvMatrix::Bt2020),
                                          testing::Values(SampleRange::Full, SampleRange::Limited)),
                         [](const auto& item) { return nameOf(item.param); });

} // namespace
} // namespace Platform::Imaging
