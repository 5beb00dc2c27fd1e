#include "Platform/Imaging/BayerRows.h"

#include "Platform/Imaging/ImagingError.h"

#include <algorithm>

namespace Platform::Imaging {
namespace {

constexpr std::size_t red = 0;
constexpr std::size_t green = 1;
constexpr std::size_t blue = 2;

std::array<std::size_t, 4> blockOf(FrameFormat format) {
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

std::uint8_t mean(int a, int b) { return static_cast<std::uint8_t>((a + b + 1) / 2); }
std::uint8_t mean(int a, int b, int c, int d) { return static_cast<std::uint8_t>((a + b + c + d + 2) / 4); }

} // namespace

bool isBayer(FrameFormat format) { return format >= FrameFormat::BayerBg8; }

BayerRows::BayerRows(const FrameLayout& layout, std::span<const std::uint8_t> bytes)
    : PictureRows({layout.width, layout.height}), _layout(layout), _bytes(bytes), _block(blockOf(layout.format)),
      _tenBits(layout.format >= FrameFormat::BayerBg10) {
    if (layout.width < 2 || layout.height < 2)
        raise(winrt::result::invalidArgument, "Frame: a mosaic has at least two pixels by two");
    for (Samples& samples : _samples)
        samples.bytes.resize(std::size_t{layout.width} + 2);
}

/// The first sample; one more stands on either side. Mirroring at the outermost pixel keeps the colour.
const std::uint8_t* BayerRows::samplesAt(std::uint32_t row) {
    Samples& samples = _samples.at(row % _samples.size());
    std::uint8_t* const first = samples.bytes.data() + 1;
    if (samples.areTaken && samples.row == row)
        return first;
    const std::size_t width = _layout.width;
    const std::uint8_t* const source = _bytes.data() + std::size_t{_layout.strides[0]} * row;
    if (_tenBits)
        for (std::size_t x = 0; x < width; ++x)
            first[x] = static_cast<std::uint8_t>(((source[2 * x + 1] & 3) << 8 | source[2 * x]) >> 2);
    else
        std::copy_n(source, width, first);
    first[-1] = first[1];
    first[width] = first[width - 2];
    samples.row = row;
    samples.areTaken = true;
    return first;
}

/// A pixel of which green is known, and whose neighbours in the row have the colour `horizontal`.
void BayerRows::fillGreen(const Neighbourhood& at, std::size_t horizontal, std::uint8_t* pixel) {
    pixel[green] = at.here[0];
    pixel[horizontal] = mean(at.here[-1], at.here[1]);
    pixel[red + blue - horizontal] = mean(at.above[0], at.below[0]);
}

/// A pixel of which red or blue is known.
void BayerRows::fillOther(const Neighbourhood& at, std::size_t own, std::uint8_t* pixel) {
    pixel[own] = at.here[0];
    pixel[green] = mean(at.here[-1], at.here[1], at.above[0], at.below[0]);
    pixel[red + blue - own] = mean(at.above[-1], at.above[1], at.below[-1], at.below[1]);
}

void BayerRows::read(std::uint8_t* row) {
    const std::uint32_t y = _next++;
    const std::uint8_t* const above = samplesAt(y == 0 ? 1 : y - 1);
    const std::uint8_t* const here = samplesAt(y);
    const std::uint8_t* const below = samplesAt(y + 1 == _layout.height ? y - 1 : y + 1);
    const std::size_t ofRow = y % 2 == 0 ? 0 : 2;
    const std::size_t firstColour = _block.at(ofRow);
    const std::size_t secondColour = _block.at(ofRow + 1);
    const std::size_t other = firstColour == green ? secondColour : firstColour;
    const std::size_t greenAt = firstColour == green ? 0 : 1;
    for (std::size_t x = 0; x < _layout.width; ++x) {
        const Neighbourhood at{above + x, here + x, below + x};
        if (x % 2 == greenAt)
            fillGreen(at, other, row + 3 * x);
        else
            fillOther(at, other, row + 3 * x);
    }
}

} // namespace Platform::Imaging
