#include "Platform/V4l2/Streaming/FrameColours.h"

#include <gtest/gtest.h>

namespace Platform::V4l2 {
namespace {

using Imaging::SampleRange;
using Imaging::YuvMatrix;

Imaging::FrameLayout layoutWith(std::uint32_t code, std::uint32_t colourSpace, std::uint32_t encoding = 0,
                                std::uint32_t quantization = 0) {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.width = 64;
    format.fmt.pix.height = 32;
    format.fmt.pix.pixelformat = code;
    format.fmt.pix.bytesperline = 160;
    format.fmt.pix.colorspace = colourSpace;
    format.fmt.pix.ycbcr_enc = encoding;
    format.fmt.pix.quantization = quantization;
    return frameLayout(format, *findPixelFormat(code));
}

TEST(FrameColoursTest, TheDriversWordCounts) {
    const auto layout =
        layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_SRGB, V4L2_YCBCR_ENC_709, V4L2_QUANTIZATION_FULL_RANGE);
    EXPECT_EQ(layout.matrix, YuvMatrix::Bt709);
    EXPECT_EQ(layout.range, SampleRange::Full);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_REC709, V4L2_YCBCR_ENC_601).matrix, YuvMatrix::Bt601);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_REC709, V4L2_YCBCR_ENC_BT2020).matrix, YuvMatrix::Bt2020);
}

TEST(FrameColoursTest, DefaultsFollowFromTheColourSpace) {
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_SRGB).matrix, YuvMatrix::Bt601);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_SRGB).range, SampleRange::Limited);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_SMPTE170M).matrix, YuvMatrix::Bt601);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_REC709).matrix, YuvMatrix::Bt709);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_BT2020).matrix, YuvMatrix::Bt2020);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_JPEG).range, SampleRange::Full);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, 0).matrix, YuvMatrix::Bt601);
}

TEST(FrameColoursTest, RgbMosaicsAndGreyAreFullUnlessTheDriverSaysOtherwise) {
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_RGB24, V4L2_COLORSPACE_SRGB).range, SampleRange::Full);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_RGB24, V4L2_COLORSPACE_SRGB, 0, V4L2_QUANTIZATION_LIM_RANGE).range,
              SampleRange::Limited);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_SRGGB8, V4L2_COLORSPACE_RAW).range, SampleRange::Full);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_GREY, V4L2_COLORSPACE_SRGB).range, SampleRange::Full);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_GREY, V4L2_COLORSPACE_SRGB, 0, V4L2_QUANTIZATION_LIM_RANGE).range,
              SampleRange::Limited);
}

TEST(FrameColoursTest, RowsAreAsLongAsTheDriverSays) {
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUYV, 0).strides[0], 160u);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_YUV420, 0).strides[1], 80u);
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_NV12, 0).strides[1], 160u);
    // A driver that says less than a row needs says nothing.
    EXPECT_EQ(layoutWith(V4L2_PIX_FMT_RGB24, 0).strides[0], 192u);
}

TEST(FrameColoursTest, PlanesWithMemoryOfTheirOwnHaveTheirOwnRows) {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    format.fmt.pix_mp.width = 64;
    format.fmt.pix_mp.height = 32;
    format.fmt.pix_mp.num_planes = 3;
    format.fmt.pix_mp.plane_fmt[0].bytesperline = 100;
    format.fmt.pix_mp.plane_fmt[1].bytesperline = 70;
    format.fmt.pix_mp.plane_fmt[2].bytesperline = 10;
    format.fmt.pix_mp.colorspace = V4L2_COLORSPACE_REC709;
    const auto layout = frameLayout(format, *findPixelFormat(V4L2_PIX_FMT_YUV420M));
    EXPECT_EQ(layout.strides[0], 100u);
    EXPECT_EQ(layout.strides[1], 70u);
    EXPECT_EQ(layout.strides[2], 32u);
    EXPECT_EQ(layout.matrix, YuvMatrix::Bt709);
}

} // namespace
} // namespace Platform::V4l2
