#include "Platform/Imaging/BayerFrames.h"

#include "Platform/Imaging/ImagingError.h"

#include <array>

namespace Platform::Imaging {
namespace {

constexpr int red = 0;
constexpr int green = 1;
constexpr int blue = 2;

/// The colours of a two by two block, row by row.
using Block = std::array<int, 4>;

Block blockOf(FrameFormat format) {
    switch (format) {
    case FrameFormat::BayerBg8:
    case FrameFormat::BayerBg10:
        return {blue, green, green, red};
    case FrameFormat::BayerGb8:
    case FrameFormat::BayerGb10:
        return {green, blue, red, green};
    case FrameFormat::BayerGr8:
    case FrameFormat::BayerGr10:
        return {green, red, blue, green};
    default:
        return {red, green, green, blue};
    }
}

class Mosaic {
public:
    Mosaic(const FrameLayout& layout, std::span<const std::uint8_t> bytes)
        : _bytes(bytes), _stride(layout.strides[0]), _width(static_cast<int>(layout.width)),
          _height(static_cast<int>(layout.height)), _block(blockOf(layout.format)),
          _tenBits(layout.format >= FrameFormat::BayerBg10) {}

    /// The sample itself where the pixel has that colour, otherwise the mean of those around it.
    std::uint8_t colourAt(int x, int y, int colour) const {
        if (colourOf(x, y) == colour)
            return static_cast<std::uint8_t>(sample(x, y));
        int sum = 0;
        int count = 0;
        for (int v = y - 1; v <= y + 1; ++v)
            for (int u = x - 1; u <= x + 1; ++u)
                if (colourOf(u, v) == colour) {
                    sum += sample(mirrored(u, _width), mirrored(v, _height));
                    ++count;
                }
        return static_cast<std::uint8_t>((sum + count / 2) / count);
    }

private:
    int colourOf(int x, int y) const { return _block.at((y & 1) * 2U + (x & 1)); }

    /// Mirroring at the outermost pixel keeps the colour.
    static int mirrored(int position, int size) {
        if (position < 0)
            return -position;
        return position < size ? position : 2 * size - 2 - position;
    }

    int sample(int x, int y) const {
        const std::size_t row = static_cast<std::size_t>(y) * _stride;
        if (!_tenBits)
            return _bytes[row + static_cast<std::size_t>(x)];
        const std::size_t at = row + 2 * static_cast<std::size_t>(x);
        return ((_bytes[at + 1] & 3) << 8 | _bytes[at]) >> 2;
    }

    const std::span<const std::uint8_t> _bytes;
    const std::size_t _stride;
    const int _width;
    const int _height;
    const Block _block;
    const bool _tenBits;
};

} // namespace

bool isBayer(FrameFormat format) { return format >= FrameFormat::BayerBg8; }

void convertBayer(const FrameLayout& layout, std::span<const std::uint8_t> bytes, RgbImage& image) {
    if (layout.width < 2 || layout.height < 2)
        raise(winrt::result::invalidArgument, "Frame: a mosaic has at least two pixels by two");
    const Mosaic mosaic(layout, bytes);
    std::uint8_t* target = image.pixels.data();
    for (int y = 0; y < static_cast<int>(layout.height); ++y)
        for (int x = 0; x < static_cast<int>(layout.width); ++x)
            for (const int colour : {red, green, blue})
                *target++ = mosaic.colourAt(x, y, colour);
}

} // namespace Platform::Imaging
