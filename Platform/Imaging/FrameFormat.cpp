#include "Platform/Imaging/FrameFormat.h"

namespace Platform::Imaging {
namespace {

std::uint32_t halfUp(std::uint32_t value) { return value / 2 + value % 2; }

} // namespace

std::size_t planeCount(FrameFormat format) {
    switch (format) {
    case FrameFormat::Nv12:
    case FrameFormat::Nv21:
    case FrameFormat::Nv16:
        return 2;
    case FrameFormat::Yu12:
    case FrameFormat::Yv12:
        return 3;
    default:
        return 1;
    }
}

std::uint32_t planeRows(const FrameLayout& layout, std::size_t plane) {
    return plane == 0 || layout.format == FrameFormat::Nv16 ? layout.height : halfUp(layout.height);
}

std::uint32_t planeRowBytes(const FrameLayout& layout, std::size_t plane) {
    switch (layout.format) {
    case FrameFormat::Yuyv:
    case FrameFormat::Uyvy:
    case FrameFormat::Yvyu:
    case FrameFormat::Vyuy:
        return halfUp(layout.width) * 4;
    case FrameFormat::Nv12:
    case FrameFormat::Nv21:
    case FrameFormat::Nv16:
        return plane == 0 ? layout.width : halfUp(layout.width) * 2;
    case FrameFormat::Yu12:
    case FrameFormat::Yv12:
        return plane == 0 ? layout.width : halfUp(layout.width);
    case FrameFormat::Rgb24:
    case FrameFormat::Bgr24:
        return layout.width * 3;
    case FrameFormat::Rgbx32:
    case FrameFormat::Bgrx32:
    case FrameFormat::Xrgb32:
    case FrameFormat::Xbgr32:
        return layout.width * 4;
    case FrameFormat::BayerBg10:
    case FrameFormat::BayerGb10:
    case FrameFormat::BayerGr10:
    case FrameFormat::BayerRg10:
        return layout.width * 2;
    case FrameFormat::Jpeg:
        return 0;
    default:
        return layout.width;
    }
}

std::array<std::uint32_t, 3> stridesFrom(FrameFormat format, std::uint32_t firstStride) {
    switch (planeCount(format)) {
    case 3:
        return {firstStride, halfUp(firstStride), halfUp(firstStride)};
    case 2:
        return {firstStride, firstStride, 0};
    default:
        return {firstStride, 0, 0};
    }
}

std::size_t frameBytes(const FrameLayout& layout) {
    if (layout.format == FrameFormat::Jpeg)
        return 0;
    std::size_t bytes = 0;
    for (std::size_t plane = 0; plane < planeCount(layout.format); ++plane)
        bytes += std::size_t{layout.strides.at(plane)} * planeRows(layout, plane);
    return bytes;
}

} // namespace Platform::Imaging
