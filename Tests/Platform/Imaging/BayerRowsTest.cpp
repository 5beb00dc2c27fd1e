#include "Platform/Imaging/BayerRows.h"

#include "Tests/Platform/Imaging/EncodedPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <utility>

namespace Platform::Imaging {
namespace {

FrameLayout layoutOf(FrameFormat format, std::uint32_t width, std::uint32_t height) {
    FrameLayout layout{format, width, height};
    layout.strides[0] = planeRowBytes(layout, 0) + 3;
    return layout;
}

/// Mirrored at the outermost position.
int mirrored(int position, int size) {
    if (position < 0)
        return -position;
    return position < size ? position : 2 * size - 2 - position;
}

/// The sample itself where the pixel has that colour, otherwise the mean of those around it that have.
int colourAt(const FrameLayout& layout, const Bytes& bytes, const std::array<int, 4>& block, int x, int y, int colour) {
    const auto colourOf = [&block](int u, int v) { return block.at((v & 1) * 2U + (u & 1)); };
    const auto sample = [&](int u, int v) {
        u = mirrored(u, static_cast<int>(layout.width));
        v = mirrored(v, static_cast<int>(layout.height));
        return bytes.at(static_cast<std::size_t>(v) * layout.strides[0] + static_cast<std::size_t>(u));
    };
    if (colourOf(x, y) == colour)
        return sample(x, y);
    int sum = 0;
    int count = 0;
    for (int v = y - 1; v <= y + 1; ++v)
        for (int u = x - 1; u <= x + 1; ++u)
            if (colourOf(u, v) == colour) {
                sum += sample(u, v);
                ++count;
            }
    return (sum + count / 2) / count;
}

TEST(BayerRowsTest, AMissingColourIsTheMeanOfTheNeighboursThatHaveIt) {
    const std::array<std::pair<FrameFormat, std::array<int, 4>>, 4> mosaics{{{FrameFormat::BayerBg8, {2, 1, 1, 0}},
                                                                             {FrameFormat::BayerGb8, {1, 2, 0, 1}},
                                                                             {FrameFormat::BayerGr8, {1, 0, 2, 1}},
                                                                             {FrameFormat::BayerRg8, {0, 1, 1, 2}}}};
    std::mt19937 random(1);
    for (const auto& [format, block] : mosaics)
        for (const auto& [width, height] : {std::pair{2, 2}, {3, 2}, {2, 3}, {8, 6}, {9, 7}}) {
            const FrameLayout layout =
                layoutOf(format, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
            Bytes bytes(frameBytes(layout));
            std::ranges::generate(bytes, [&random] { return static_cast<std::uint8_t>(random()); });
            const RgbImage image = convertFrame(layout, bytes);
            for (int i = 0; i < 3 * width * height; ++i)
                ASSERT_EQ(image.pixels.at(static_cast<std::size_t>(i)),
                          colourAt(layout, bytes, block, i / 3 % width, i / 3 / width, i % 3))
                    << width << "x" << height << " at " << i;
        }
}

} // namespace
} // namespace Platform::Imaging
