#include "Platform/V4l2/Streaming/FrameColours.h"

#include <algorithm>
#include <cstddef>

namespace Platform::V4l2 {
namespace {

using Imaging::FrameLayout;
using Imaging::SampleRange;
using Imaging::YuvMatrix;

struct Colorimetry {
    std::uint32_t colourSpace;
    std::uint32_t encoding;
    std::uint32_t quantization;
};

YuvMatrix matrixOf(const Colorimetry& colours) {
    const std::uint32_t encoding = colours.encoding != V4L2_YCBCR_ENC_DEFAULT
                                       ? colours.encoding
                                       : static_cast<std::uint32_t>(V4L2_MAP_YCBCR_ENC_DEFAULT(colours.colourSpace));
    switch (encoding) {
    case V4L2_YCBCR_ENC_709:
    case V4L2_YCBCR_ENC_XV709:
    case V4L2_YCBCR_ENC_SMPTE240M: // differs from BT.709 by less than one step in a hundred
        return YuvMatrix::Bt709;
    case V4L2_YCBCR_ENC_BT2020:
    case V4L2_YCBCR_ENC_BT2020_CONST_LUM:
        return YuvMatrix::Bt2020;
    default:
        return YuvMatrix::Bt601;
    }
}

SampleRange rangeOf(const Colorimetry& colours, bool rgb) {
    const std::uint32_t quantization =
        colours.quantization != V4L2_QUANTIZATION_DEFAULT
            ? colours.quantization
            : static_cast<std::uint32_t>(V4L2_MAP_QUANTIZATION_DEFAULT(rgb, colours.colourSpace, colours.encoding));
    return quantization == V4L2_QUANTIZATION_LIM_RANGE ? SampleRange::Limited : SampleRange::Full;
}

/// A sensor's mosaic has no range, and drivers fill grey frames up to white.
bool isFullByDefault(Imaging::FrameFormat format) {
    return isRgb(format) || format == Imaging::FrameFormat::Grey || format >= Imaging::FrameFormat::BayerBg8;
}

FrameLayout layoutOf(const v4l2_pix_format& pix, const PixelFormat& pixelFormat) {
    FrameLayout layout{pixelFormat.format, pix.width, pix.height};
    layout.strides =
        Imaging::stridesFrom(pixelFormat.format, std::max(pix.bytesperline, Imaging::planeRowBytes(layout, 0)));
    return layout;
}

FrameLayout layoutOf(const v4l2_pix_format_mplane& pix, const PixelFormat& pixelFormat) {
    FrameLayout layout{pixelFormat.format, pix.width, pix.height};
    layout.strides = Imaging::stridesFrom(pixelFormat.format,
                                          std::max(pix.plane_fmt[0].bytesperline, Imaging::planeRowBytes(layout, 0)));
    if (pixelFormat.separatePlanes)
        for (std::size_t plane = 1; plane < Imaging::planeCount(pixelFormat.format); ++plane)
            layout.strides.at(plane) =
                std::max(pix.plane_fmt[plane].bytesperline, Imaging::planeRowBytes(layout, plane));
    return layout;
}

} // namespace

FrameLayout frameLayout(const v4l2_format& format, const PixelFormat& pixelFormat) {
    const bool multiPlanar = format.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    FrameLayout layout = multiPlanar ? layoutOf(format.fmt.pix_mp, pixelFormat) : layoutOf(format.fmt.pix, pixelFormat);
    const Colorimetry colours =
        multiPlanar
            ? Colorimetry{format.fmt.pix_mp.colorspace, format.fmt.pix_mp.ycbcr_enc, format.fmt.pix_mp.quantization}
            : Colorimetry{format.fmt.pix.colorspace, format.fmt.pix.ycbcr_enc, format.fmt.pix.quantization};
    layout.matrix = matrixOf(colours);
    layout.range = rangeOf(colours, isFullByDefault(pixelFormat.format));
    return layout;
}

} // namespace Platform::V4l2
