#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Platform::Imaging {

/// How the samples of a camera's frame lie in memory; byte orders are those of increasing addresses.
enum class FrameFormat {
    Yuyv,     // 4:2:2 in one plane: Y U Y V
    Uyvy,     // U Y V Y
    Yvyu,     // Y V Y U
    Vyuy,     // V Y U Y
    Nv12,     // 4:2:0, a plane of Y and one of U V pairs
    Nv21,     // 4:2:0, a plane of Y and one of V U pairs
    Nv16,     // 4:2:2, a plane of Y and one of U V pairs
    Yu12,     // 4:2:0, planes of Y, U, V
    Yv12,     // 4:2:0, planes of Y, V, U
    Rgb24,    // R G B
    Bgr24,    // B G R
    Rgbx32,   // R G B and one byte without meaning
    Bgrx32,   // B G R X
    Xrgb32,   // X R G B
    Xbgr32,   // X B G R
    Grey,     // Y alone
    Jpeg,     // one JPEG file, with or without its Huffman tables
    BayerBg8, // mosaics, named after the first two samples: blue green / green red
    BayerGb8,
    BayerGr8,
    BayerRg8,
    BayerBg10, // the same with 10 bits in two bytes, the low one first
    BayerGb10,
    BayerGr10,
    BayerRg10
};

/// How brightness and colour differences become R, G, B.
enum class YuvMatrix { Bt601, Bt709, Bt2020 };

/// What stands for black and white: 0 and 255, or 16 and 235.
enum class SampleRange { Full, Limited };

/// What the bytes of a frame mean. The planes follow each other without a gap.
struct FrameLayout {
    FrameFormat format = FrameFormat::Yuyv;
    std::uint32_t width = 0;                // pixels
    std::uint32_t height = 0;               // pixels
    std::array<std::uint32_t, 3> strides{}; // bytes from row to row of each plane; not used for Jpeg
    YuvMatrix matrix = YuvMatrix::Bt601;    // not used for colours that are R, G, B already, and for Jpeg
    SampleRange range = SampleRange::Limited;
};

/// 1 to 3.
std::size_t planeCount(FrameFormat format);

/// The rows of a plane.
std::uint32_t planeRows(const FrameLayout& layout, std::size_t plane);

/// The bytes that one row of a plane needs at least; 0 for Jpeg.
std::uint32_t planeRowBytes(const FrameLayout& layout, std::size_t plane);

/// The strides of all planes where the first one's is known and the others follow from it.
std::array<std::uint32_t, 3> stridesFrom(FrameFormat format, std::uint32_t firstStride);

/// The bytes of a whole frame; 0 for Jpeg, whose frames have no fixed size.
std::size_t frameBytes(const FrameLayout& layout);

} // namespace Platform::Imaging
