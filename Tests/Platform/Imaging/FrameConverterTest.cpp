#include "Platform/Imaging/FrameConverter.h"

#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/RaisedError.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <string>

namespace Platform::Imaging {
namespace {

using Colour = std::array<int, 3>; // R, G, B

constexpr std::uint32_t pictureSide = 16;
constexpr std::uint32_t padding = 6; // bytes behind each row, or behind each half row of a half-size plane

/// The colours of the four quarters: top left, top right, bottom left, bottom right.
using Quarters = std::array<Colour, 4>;

const std::vector<Quarters> allPictures = {
    {Colour{255, 0, 0}, Colour{0, 255, 0}, Colour{0, 0, 255}, Colour{255, 255, 255}},
    {Colour{0, 0, 0}, Colour{128, 128, 128}, Colour{255, 255, 0}, Colour{0, 255, 255}},
    {Colour{255, 0, 255}, Colour{200, 100, 50}, Colour{20, 60, 180}, Colour{90, 160, 40}}};

Colour colourAt(const Quarters& picture, std::uint32_t x, std::uint32_t y) {
    return picture.at((y >= pictureSide / 2 ? 2 : 0) + (x >= pictureSide / 2 ? 1 : 0));
}

struct Yuv {
    std::uint8_t y, u, v;
};

std::uint8_t rounded(double value) { return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0))); }

/// The definitions of the ITU, in real numbers.
Yuv yuvOf(const Colour& colour, YuvMatrix matrix, SampleRange range) {
    const double kr = matrix == YuvMatrix::Bt601 ? 0.299 : matrix == YuvMatrix::Bt709 ? 0.2126 : 0.2627;
    const double kb = matrix == YuvMatrix::Bt601 ? 0.114 : matrix == YuvMatrix::Bt709 ? 0.0722 : 0.0593;
    const double r = colour[0] / 255.0;
    const double g = colour[1] / 255.0;
    const double b = colour[2] / 255.0;
    const double y = kr * r + (1 - kr - kb) * g + kb * b;
    const double pb = (b - y) / (2 * (1 - kb));
    const double pr = (r - y) / (2 * (1 - kr));
    if (range == SampleRange::Full)
        return {rounded(255 * y), rounded(128 + 255 * pb), rounded(128 + 255 * pr)};
    return {rounded(16 + 219 * y), rounded(128 + 224 * pb), rounded(128 + 224 * pr)};
}

/// A frame that is written sample by sample, as the format's name says.
class FrameWriter {
public:
    FrameWriter(FrameLayout layout, const Quarters& picture) : _layout(layout), _picture(picture) {
        bytes.resize(frameBytes(layout), 0x5A);
    }

    void packed(std::size_t y0, std::size_t u, std::size_t y1, std::size_t v) {
        each(2, 1, [&](std::uint32_t x, std::uint32_t y, const Yuv& yuv) {
            std::uint8_t* at = row(0, y) + std::size_t{x} * 2;
            at[y0] = at[y1] = yuv.y;
            at[u] = yuv.u;
            at[v] = yuv.v;
        });
    }
    void luma() {
        each(1, 1, [&](std::uint32_t x, std::uint32_t y, const Yuv& yuv) { row(0, y)[x] = yuv.y; });
    }
    void pairs(std::uint32_t rowStep, std::size_t u, std::size_t v) {
        luma();
        each(2, rowStep, [&](std::uint32_t x, std::uint32_t y, const Yuv& yuv) {
            row(1, y / rowStep)[x + u] = yuv.u;
            row(1, y / rowStep)[x + v] = yuv.v;
        });
    }
    void planes(std::size_t u, std::size_t v) {
        luma();
        each(2, 2, [&](std::uint32_t x, std::uint32_t y, const Yuv& yuv) {
            row(u, y / 2)[x / 2] = yuv.u;
            row(v, y / 2)[x / 2] = yuv.v;
        });
    }
    void pixels(std::size_t size, std::size_t r, std::size_t g, std::size_t b) {
        for (std::uint32_t y = 0; y < pictureSide; ++y)
            for (std::uint32_t x = 0; x < pictureSide; ++x) {
                std::uint8_t* at = row(0, y) + x * size;
                const Colour colour = colourAt(_picture, x, y);
                at[r] = inRange(colour[0]);
                at[g] = inRange(colour[1]);
                at[b] = inRange(colour[2]);
            }
    }
    /// The colours of the mosaic's block, row by row: 0, 1, 2 for R, G, B.
    void mosaic(const std::array<std::size_t, 4>& block, bool tenBits) {
        for (std::uint32_t y = 0; y < pictureSide; ++y)
            for (std::uint32_t x = 0; x < pictureSide; ++x) {
                const int value = colourAt(_picture, x, y).at(block.at((y % 2) * 2 + x % 2));
                if (!tenBits) {
                    row(0, y)[x] = static_cast<std::uint8_t>(value);
                } else {
                    row(0, y)[std::size_t{2} * x] = static_cast<std::uint8_t>(value << 2 & 0xFF);
                    row(0, y)[std::size_t{2} * x + 1] = static_cast<std::uint8_t>(value >> 6);
                }
            }
    }

    Bytes bytes;

private:
    template <typename Write> void each(std::uint32_t stepX, std::uint32_t stepY, Write write) {
        for (std::uint32_t y = 0; y < pictureSide; y += stepY)
            for (std::uint32_t x = 0; x < pictureSide; x += stepX)
                write(x, y, yuvOf(colourAt(_picture, x, y), _layout.matrix, _layout.range));
    }
    std::uint8_t* row(std::size_t plane, std::uint32_t y) {
        std::size_t offset = 0;
        for (std::size_t before = 0; before < plane; ++before)
            offset += std::size_t{_layout.strides.at(before)} * planeRows(_layout, before);
        return bytes.data() + offset + std::size_t{_layout.strides.at(plane)} * y;
    }
    std::uint8_t inRange(int value) const {
        return _layout.range == SampleRange::Full ? static_cast<std::uint8_t>(value)
                                                  : rounded(16 + value * 219 / 255.0);
    }

    const FrameLayout _layout;
    const Quarters _picture;
};

struct FormatCase {
    const char* name;
    FrameFormat format;
    std::uint32_t rowBytes;
    std::function<void(FrameWriter&)> write;
};

std::ostream& operator<<(std::ostream& stream, const FormatCase& item) { return stream << item.name; }

FormatCase mosaicCase(const char* name, FrameFormat format, const std::array<std::size_t, 4>& block, bool tenBits) {
    return {name, format, tenBits ? pictureSide * 2 : pictureSide, [=](FrameWriter& w) { w.mosaic(block, tenBits); }};
}

class FrameConverterTest : public testing::TestWithParam<FormatCase> {
protected:
    static FrameLayout layoutWith(YuvMatrix matrix, SampleRange range) {
        FrameLayout layout{GetParam().format, pictureSide, pictureSide, {}, matrix, range};
        layout.strides = stridesFrom(layout.format, GetParam().rowBytes + padding);
        return layout;
    }

    static void expectPicture(const FrameLayout& layout) {
        for (const Quarters& picture : allPictures) {
            FrameWriter writer(layout, picture);
            GetParam().write(writer);
            const RgbImage image = convertFrame(layout, writer.bytes);
            ASSERT_EQ(image.pixels.size(), 3u * pictureSide * pictureSide);
            // The edges of a quarter may mix with its neighbours.
            for (std::uint32_t y = 2; y < pictureSide; y += 4)
                for (std::uint32_t x = 2; x < pictureSide; x += 4)
                    expectPixel(image, x, y, expectedColour(layout, picture, x, y));
        }
    }

private:
    static Colour expectedColour(const FrameLayout& layout, const Quarters& picture, std::uint32_t x, std::uint32_t y) {
        const Colour colour = colourAt(picture, x, y);
        if (layout.format != FrameFormat::Grey)
            return colour;
        const int luma = yuvOf(colour, layout.matrix, SampleRange::Full).y;
        return {luma, luma, luma};
    }
    static void expectPixel(const RgbImage& image, std::uint32_t x, std::uint32_t y, const Colour& expected) {
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(image.pixels.at((std::size_t{y} * pictureSide + x) * 3 + channel), expected.at(channel), 3)
                << "channel " << channel << " at " << x << "," << y;
    }
};

TEST_P(FrameConverterTest, GivesTheKnownColours) {
    for (const SampleRange range : {SampleRange::Full, SampleRange::Limited})
        for (const YuvMatrix matrix : {YuvMatrix::Bt601, YuvMatrix::Bt709, YuvMatrix::Bt2020}) {
            if (GetParam().format >= FrameFormat::BayerBg8 && range == SampleRange::Limited)
                continue; // the samples of a sensor are what they are
            SCOPED_TRACE(std::to_string(static_cast<int>(matrix)) +
                         (range == SampleRange::Full ? " full" : " limited"));
            expectPicture(layoutWith(matrix, range));
        }
}

TEST_P(FrameConverterTest, RefusesAFrameThatIsOneByteShort) {
    const FrameLayout layout = layoutWith(YuvMatrix::Bt601, SampleRange::Full);
    const Bytes bytes(frameBytes(layout) - 1);
    EXPECT_EQ(raisedBy([&] { convertFrame(layout, bytes); }), "80004005 Frame: " + std::to_string(bytes.size()) +
                                                                  " bytes instead of " +
                                                                  std::to_string(bytes.size() + 1));
}

TEST_P(FrameConverterTest, RefusesRowsThatAreTooShortForTheWidth) {
    FrameLayout layout = layoutWith(YuvMatrix::Bt601, SampleRange::Full);
    layout.strides = stridesFrom(layout.format, GetParam().rowBytes - 1);
    const Bytes bytes(frameBytes(layout));
    EXPECT_EQ(raisedBy([&] { convertFrame(layout, bytes); }), "80070057 Frame: rows of " +
                                                                  std::to_string(GetParam().rowBytes - 1) +
                                                                  " bytes are too short for the width");
}

TEST_P(FrameConverterTest, TakesOddSizes) {
    FrameLayout layout = layoutWith(YuvMatrix::Bt601, SampleRange::Full);
    layout.width = 13;
    layout.height = 7;
    const Bytes bytes(frameBytes(layout), 128);
    const RgbImage image = convertFrame(layout, bytes);
    EXPECT_EQ(image.width, 13u);
    EXPECT_EQ(image.height, 7u);
    // Ten-bit samples are 128 * 257 cut to ten bits, of which the upper eight stay: 32.
    const int expected = layout.format >= FrameFormat::BayerBg10 ? 32 : 128;
    EXPECT_TRUE(std::all_of(image.pixels.begin(), image.pixels.end(),
                            [&](std::uint8_t value) { return std::abs(value - expected) <= 1; }));
}

INSTANTIATE_TEST_SUITE_P(
    EachFormat, FrameConverterTest,
    testing::Values(
        FormatCase{"YUYV", FrameFormat::Yuyv, pictureSide * 2, [](FrameWriter& w) { w.packed(0, 1, 2, 3); }},
        FormatCase{"UYVY", FrameFormat::Uyvy, pictureSide * 2, [](FrameWriter& w) { w.packed(1, 0, 3, 2); }},
        FormatCase{"YVYU", FrameFormat::Yvyu, pictureSide * 2, [](FrameWriter& w) { w.packed(0, 3, 2, 1); }},
        FormatCase{"VYUY", FrameFormat::Vyuy, pictureSide * 2, [](FrameWriter& w) { w.packed(1, 2, 3, 0); }},
        FormatCase{"NV12", FrameFormat::Nv12, pictureSide, [](FrameWriter& w) { w.pairs(2, 0, 1); }},
        FormatCase{"NV21", FrameFormat::Nv21, pictureSide, [](FrameWriter& w) { w.pairs(2, 1, 0); }},
        FormatCase{"NV16", FrameFormat::Nv16, pictureSide, [](FrameWriter& w) { w.pairs(1, 0, 1); }},
        FormatCase{"YU12", FrameFormat::Yu12, pictureSide, [](FrameWriter& w) { w.planes(1, 2); }},
        FormatCase{"YV12", FrameFormat::Yv12, pictureSide, [](FrameWriter& w) { w.planes(2, 1); }},
        FormatCase{"RGB24", FrameFormat::Rgb24, pictureSide * 3, [](FrameWriter& w) { w.pixels(3, 0, 1, 2); }},
        FormatCase{"BGR24", FrameFormat::Bgr24, pictureSide * 3, [](FrameWriter& w) { w.pixels(3, 2, 1, 0); }},
        FormatCase{"RGBX32", FrameFormat::Rgbx32, pictureSide * 4, [](FrameWriter& w) { w.pixels(4, 0, 1, 2); }},
        FormatCase{"BGRX32", FrameFormat::Bgrx32, pictureSide * 4, [](FrameWriter& w) { w.pixels(4, 2, 1, 0); }},
        FormatCase{"XRGB32", FrameFormat::Xrgb32, pictureSide * 4, [](FrameWriter& w) { w.pixels(4, 1, 2, 3); }},
        FormatCase{"XBGR32", FrameFormat::Xbgr32, pictureSide * 4, [](FrameWriter& w) { w.pixels(4, 3, 2, 1); }},
        FormatCase{"GREY", FrameFormat::Grey, pictureSide, [](FrameWriter& w) { w.luma(); }},
        mosaicCase("BA81", FrameFormat::BayerBg8, {2, 1, 1, 0}, false),
        mosaicCase("GBRG", FrameFormat::BayerGb8, {1, 2, 0, 1}, false),
        mosaicCase("GRBG", FrameFormat::BayerGr8, {1, 0, 2, 1}, false),
        mosaicCase("RGGB", FrameFormat::BayerRg8, {0, 1, 1, 2}, false),
        mosaicCase("BG10", FrameFormat::BayerBg10, {2, 1, 1, 0}, true),
        mosaicCase("GB10", FrameFormat::BayerGb10, {1, 2, 0, 1}, true),
        mosaicCase("GR10", FrameFormat::BayerGr10, {1, 0, 2, 1}, true),
        mosaicCase("RG10", FrameFormat::BayerRg10, {0, 1, 1, 2}, true)),
    [](const auto& item) { return item.param.name; });

TEST(FrameConverterJpegTest, GivesThePictureOfTheFile) {
    const RgbImage picture = smoothPicture(32, 24);
    const RgbImage image = convertFrame({FrameFormat::Jpeg, 32, 24}, writeJpeg(picture, TJSAMP_444));
    ASSERT_EQ(image.pixels.size(), picture.pixels.size());
    for (std::size_t i = 0; i < image.pixels.size(); ++i)
        ASSERT_NEAR(image.pixels[i], picture.pixels[i], 8) << i;
}

TEST(FrameConverterJpegTest, RefusesAnotherSizeThanTheStreams) {
    const Bytes file = writeJpeg(smoothPicture(32, 24), TJSAMP_444);
    EXPECT_EQ(raisedBy([&] { convertFrame({FrameFormat::Jpeg, 24, 32}, file); }),
              "80004005 Frame: the JPEG has another size than the stream");
}

TEST(FrameConverterLimitsTest, RefusesASizeOfNothingAndOneBeyondTheLimits) {
    const Bytes bytes(16);
    EXPECT_EQ(raisedBy([&] { convertFrame({FrameFormat::Grey, 0, 4, {4}}, bytes); }),
              "80070057 Frame: a picture of 0x4 is not supported");
    EXPECT_EQ(raisedBy([&] { convertFrame({FrameFormat::Grey, 40000, 1, {40000}}, bytes); }),
              "80070057 Frame: a picture of 40000x1 is not supported");
}

TEST(FrameConverterLimitsTest, RefusesAMosaicOfOneRow) {
    const Bytes bytes(16);
    EXPECT_EQ(raisedBy([&] { convertFrame({FrameFormat::BayerRg8, 4, 1, {4}}, bytes); }),
              "80070057 Frame: a mosaic has at least two pixels by two");
}

} // namespace
} // namespace Platform::Imaging
