#include "Platform/Imaging/FrameConverter.h"

#include "Platform/Imaging/BayerFrames.h"
#include "Platform/Imaging/ImagingError.h"
#include "Platform/Imaging/MotionJpegReader.h"
#include "Platform/Imaging/YuvFrames.h"

#include <algorithm>
#include <string>

namespace Platform::Imaging {
namespace {

using Table = std::array<std::uint8_t, 256>;

/// Limited-range samples to full ones: 16 becomes 0, 235 becomes 255, what lies outside is cut.
Table fullRangeTable(SampleRange range) {
    Table table{};
    for (int value = 0; value < 256; ++value) {
        const int full = range == SampleRange::Full ? value : ((value - 16) * 255 + 109) / 219;
        table.at(static_cast<std::size_t>(value)) = static_cast<std::uint8_t>(std::clamp(full, 0, 255));
    }
    return table;
}

/// Where the samples of a pixel stand that has `size` bytes.
struct PixelOrder {
    std::size_t size;
    std::size_t red;
    std::size_t green;
    std::size_t blue;
};

void convertPixels(const FrameLayout& layout, std::span<const std::uint8_t> bytes, const PixelOrder& order,
                   RgbImage& image) {
    const Table table = fullRangeTable(layout.range);
    std::uint8_t* target = image.pixels.data();
    for (std::uint32_t y = 0; y < layout.height; ++y) {
        const std::uint8_t* source = bytes.data() + std::size_t{y} * layout.strides[0];
        for (std::uint32_t x = 0; x < layout.width; ++x, source += order.size) {
            *target++ = table[source[order.red]];
            *target++ = table[source[order.green]];
            *target++ = table[source[order.blue]];
        }
    }
}

void requireBytes(const FrameLayout& layout, std::span<const std::uint8_t> bytes) {
    for (std::size_t plane = 0; plane < planeCount(layout.format); ++plane)
        if (layout.strides.at(plane) < planeRowBytes(layout, plane))
            raise(winrt::result::invalidArgument,
                  "Frame: rows of " + std::to_string(layout.strides.at(plane)) + " bytes are too short for the width");
    if (bytes.size() < frameBytes(layout))
        raise(winrt::result::fail,
              "Frame: " + std::to_string(bytes.size()) + " bytes instead of " + std::to_string(frameBytes(layout)));
}

RgbImage convertJpeg(const FrameLayout& layout, std::span<const std::uint8_t> bytes) {
    MotionJpegReader reader(bytes);
    if (reader.size().width != layout.width || reader.size().height != layout.height)
        raise(winrt::result::fail, "Frame: the JPEG has another size than the stream");
    return reader.readPixels();
}

void convertInto(const FrameLayout& layout, std::span<const std::uint8_t> bytes, RgbImage& image) {
    switch (layout.format) {
    case FrameFormat::Rgb24:
        return convertPixels(layout, bytes, {3, 0, 1, 2}, image);
    case FrameFormat::Bgr24:
        return convertPixels(layout, bytes, {3, 2, 1, 0}, image);
    case FrameFormat::Rgbx32:
        return convertPixels(layout, bytes, {4, 0, 1, 2}, image);
    case FrameFormat::Bgrx32:
        return convertPixels(layout, bytes, {4, 2, 1, 0}, image);
    case FrameFormat::Xrgb32:
        return convertPixels(layout, bytes, {4, 1, 2, 3}, image);
    case FrameFormat::Xbgr32:
        return convertPixels(layout, bytes, {4, 3, 2, 1}, image);
    case FrameFormat::Grey:
        return convertPixels(layout, bytes, {1, 0, 0, 0}, image);
    default:
        return isBayer(layout.format) ? convertBayer(layout, bytes, image) : convertYuv(layout, bytes, image);
    }
}

} // namespace

RgbImage convertFrame(const FrameLayout& layout, std::span<const std::uint8_t> bytes) {
    requireSizeWithinLimits(layout.width, layout.height, "Frame");
    if (layout.format == FrameFormat::Jpeg)
        return convertJpeg(layout, bytes);
    requireBytes(layout, bytes);
    RgbImage image{layout.width, layout.height,
                   std::vector<std::uint8_t>(std::size_t{3} * layout.width * layout.height)};
    convertInto(layout, bytes, image);
    return image;
}

} // namespace Platform::Imaging
