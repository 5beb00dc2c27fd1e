#include "Platform/Imaging/FrameConverter.h"

#include "Platform/Imaging/BayerRows.h"
#include "Platform/Imaging/ImagingError.h"
#include "Platform/Imaging/MotionJpegReader.h"
#include "Platform/Imaging/YuvRows.h"

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

/// Pixels whose samples are R, G, B, or grey.
class PixelRows final : public PictureRows {
public:
    PixelRows(const FrameLayout& layout, std::span<const std::uint8_t> bytes, const PixelOrder& order)
        : PictureRows({layout.width, layout.height}), _bytes(bytes), _stride(layout.strides[0]), _order(order),
          _table(fullRangeTable(layout.range)),
          _asTheyAre(layout.format == FrameFormat::Rgb24 && layout.range == SampleRange::Full) {}

    void read(std::uint8_t* row) override {
        const std::uint8_t* source = _bytes.data() + _next++ * _stride;
        if (_asTheyAre) {
            std::copy_n(source, std::size_t{3} * size().width, row);
            return;
        }
        for (std::size_t x = 0; x < size().width; ++x, source += _order.size) {
            *row++ = _table[source[_order.red]];
            *row++ = _table[source[_order.green]];
            *row++ = _table[source[_order.blue]];
        }
    }

private:
    const std::span<const std::uint8_t> _bytes;
    const std::size_t _stride;
    const PixelOrder _order;
    const Table _table;
    const bool _asTheyAre;
    std::size_t _next = 0;
};

void requireBytes(const FrameLayout& layout, std::span<const std::uint8_t> bytes) {
    for (std::size_t plane = 0; plane < planeCount(layout.format); ++plane)
        if (layout.strides.at(plane) < planeRowBytes(layout, plane))
            raise(winrt::result::invalidArgument,
                  "Frame: rows of " + std::to_string(layout.strides.at(plane)) + " bytes are too short for the width");
    if (bytes.size() < frameBytes(layout))
        raise(winrt::result::fail,
              "Frame: " + std::to_string(bytes.size()) + " bytes instead of " + std::to_string(frameBytes(layout)));
}

std::unique_ptr<PictureRows> openJpeg(const FrameLayout& layout, std::span<const std::uint8_t> bytes) {
    auto reader = std::make_unique<MotionJpegReader>(bytes);
    if (reader->size().width != layout.width || reader->size().height != layout.height)
        raise(winrt::result::fail, "Frame: the JPEG has another size than the stream");
    return reader;
}

} // namespace

std::unique_ptr<PictureRows> openFrame(const FrameLayout& layout, std::span<const std::uint8_t> bytes) {
    requireSizeWithinLimits(layout.width, layout.height, "Frame");
    if (layout.format == FrameFormat::Jpeg)
        return openJpeg(layout, bytes);
    requireBytes(layout, bytes);
    const auto pixels = [&](const PixelOrder& order) { return std::make_unique<PixelRows>(layout, bytes, order); };
    switch (layout.format) {
    case FrameFormat::Rgb24:
        return pixels({3, 0, 1, 2});
    case FrameFormat::Bgr24:
        return pixels({3, 2, 1, 0});
    case FrameFormat::Rgbx32:
        return pixels({4, 0, 1, 2});
    case FrameFormat::Bgrx32:
        return pixels({4, 2, 1, 0});
    case FrameFormat::Xrgb32:
        return pixels({4, 1, 2, 3});
    case FrameFormat::Xbgr32:
        return pixels({4, 3, 2, 1});
    case FrameFormat::Grey:
        return pixels({1, 0, 0, 0});
    default:
        if (isBayer(layout.format))
            return std::make_unique<BayerRows>(layout, bytes);
        return std::make_unique<YuvRows>(layout, bytes);
    }
}

} // namespace Platform::Imaging
