#include "Tests/RealDrivers/UsbCamera/Picture.h"

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <utility>

namespace UsbCamera {
namespace {

constexpr unsigned blockSide = 16; // pixels
constexpr unsigned bitsInRow = 16;
constexpr unsigned colourBlocks = 5;
constexpr int jpegQuality = 90;

struct Colour {
    std::uint8_t y;
    std::uint8_t u;
    std::uint8_t v;
};

/// BT.601; YUYV in the limited range, JPEG in the full one.
struct Palette {
    Colour black, white, red, green, blue;
    double lowest, span; // Y of black, and from there to white

    Colour grey(std::uint32_t exposure) const {
        const double level = 20.0 + 18.0 * std::log2(static_cast<double>(std::max(exposure, 1u)));
        return {static_cast<std::uint8_t>(std::lround(lowest + std::min(level, 255.0) * span / 255.0)), 128, 128};
    }
};

constexpr Palette limitedRange{{16, 128, 128}, {235, 128, 128}, {81, 90, 240}, {145, 54, 34}, {41, 240, 110}, 16, 219};
constexpr Palette fullRange{{0, 128, 128}, {255, 128, 128}, {76, 85, 255}, {150, 44, 21}, {29, 255, 107}, 0, 255};

/// YUYV.
class Canvas {
public:
    explicit Canvas(const Size& size) : _size(size), _bytes(std::size_t{size.width} * size.height * 2) {}

    void fill(unsigned left, unsigned top, unsigned right, unsigned bottom, const Colour& colour) {
        const std::array<std::uint8_t, 4> pair{colour.y, colour.u, colour.y, colour.v};
        const std::size_t width = (std::min(right, _size.width) - left) / 2 * pair.size();
        const auto first = rowAt(left, top);
        for (std::size_t i = 0; i < width; ++i)
            first[static_cast<std::ptrdiff_t>(i)] = pair.at(i % pair.size());
        for (unsigned y = top + 1; y < std::min(bottom, _size.height); ++y)
            std::copy_n(first, width, rowAt(left, y));
    }

    void drawBits(unsigned row, std::uint32_t value, const Palette& palette) {
        for (unsigned bit = 0; bit < bitsInRow; ++bit) {
            const bool isSet = (value >> (bitsInRow - 1 - bit) & 1) != 0;
            fill(bit * blockSide, row * blockSide, (bit + 1) * blockSide, (row + 1) * blockSide,
                 isSet ? palette.white : palette.black);
        }
    }

    const Size& size() const { return _size; }
    Bytes& bytes() { return _bytes; }

private:
    Bytes::iterator rowAt(unsigned x, unsigned y) {
        return _bytes.begin() + static_cast<std::ptrdiff_t>((std::size_t{y} * _size.width + x) * 2);
    }

    Size _size;
    Bytes _bytes;
};

std::uint32_t automatics(const FrameState& frame) {
    return (frame.autoExposure ? 1u : 0u) | (frame.autoFocus ? 2u : 0u) | (frame.autoWhiteBalance ? 4u : 0u);
}

Canvas draw(const FrameState& frame, const Size& size, const Palette& palette) {
    Canvas canvas(size);
    canvas.fill(0, 0, size.width, size.height, palette.grey(frame.exposure));
    canvas.drawBits(0, frame.number, palette);
    canvas.drawBits(1, frame.exposure, palette);
    canvas.drawBits(2, automatics(frame), palette);
    unsigned left = 0;
    for (const Colour& colour : {palette.red, palette.green, palette.blue}) {
        canvas.fill(left, 3 * blockSide, left + colourBlocks * blockSide, 4 * blockSide, colour);
        left += colourBlocks * blockSide;
    }
    return canvas;
}

struct Planes {
    std::array<Bytes, 3> samples;

    explicit Planes(Canvas& canvas) {
        const Bytes& yuyv = canvas.bytes();
        for (std::size_t i = 0; i + 3 < yuyv.size(); i += 4) {
            samples[0].push_back(yuyv[i]);
            samples[0].push_back(yuyv[i + 2]);
            samples[1].push_back(yuyv[i + 1]);
            samples[2].push_back(yuyv[i + 3]);
        }
    }
};

Bytes compress(Canvas& canvas) {
    const Planes planes(canvas);
    std::array<const unsigned char*, 3> pointers{planes.samples[0].data(), planes.samples[1].data(),
                                                 planes.samples[2].data()};
    const std::unique_ptr<void, int (*)(tjhandle)> compressor(tjInitCompress(), &tjDestroy);
    unsigned char* jpeg = nullptr;
    unsigned long size = 0;
    const int result = tjCompressFromYUVPlanes(compressor.get(), pointers.data(), static_cast<int>(canvas.size().width),
                                               nullptr, static_cast<int>(canvas.size().height), TJSAMP_422, &jpeg,
                                               &size, jpegQuality, TJFLAG_FASTDCT);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(jpeg, &tjFree);
    if (result != 0)
        throw std::runtime_error(tjGetErrorStr2(compressor.get()));
    return {jpeg, jpeg + size};
}

} // namespace

Bytes encode(const FrameState& frame, Format format, const Size& size) {
    Canvas canvas = draw(frame, size, format == Format::Yuyv ? limitedRange : fullRange);
    return format == Format::Yuyv ? std::move(canvas.bytes()) : compress(canvas);
}

} // namespace UsbCamera
