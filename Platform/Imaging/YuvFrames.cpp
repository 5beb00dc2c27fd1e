#include "Platform/Imaging/YuvFrames.h"

#include <libyuv/convert.h>
#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace Platform::Imaging {
namespace {

/// The weights of red and blue in brightness (ITU-R BT.601, BT.709, BT.2020).
struct Weights {
    double red;
    double blue;
};

Weights weightsOf(YuvMatrix matrix) {
    switch (matrix) {
    case YuvMatrix::Bt709:
        return {0.2126, 0.0722};
    case YuvMatrix::Bt2020:
        return {0.2627, 0.0593};
    default:
        return {0.299, 0.114};
    }
}

/// What each sample adds to R, G and B, as fixed-point numbers with 16 bits behind the point. The library's
/// own conversion is off by 12 of 255 in blue for limited-range BT.709, as its factors end at 2.
class ColourTables {
public:
    ColourTables(YuvMatrix matrix, SampleRange range) {
        const bool full = range == SampleRange::Full;
        const double lumaScale = full ? 1.0 : 255.0 / 219.0;
        const double chromaScale = full ? 1.0 : 255.0 / 224.0;
        const Weights weights = weightsOf(matrix);
        const double green = 1.0 - weights.red - weights.blue;
        for (std::size_t i = 0; i < 256; ++i) {
            const double chroma = (static_cast<double>(i) - 128.0) * chromaScale;
            _luma.at(i) = fixed((static_cast<double>(i) - (full ? 0.0 : 16.0)) * lumaScale + 0.5);
            _redOfV.at(i) = fixed(2.0 * (1.0 - weights.red) * chroma);
            _blueOfU.at(i) = fixed(2.0 * (1.0 - weights.blue) * chroma);
            _greenOfU.at(i) = fixed(-2.0 * (1.0 - weights.blue) * weights.blue / green * chroma);
            _greenOfV.at(i) = fixed(-2.0 * (1.0 - weights.red) * weights.red / green * chroma);
        }
    }

    void toRgb(std::uint8_t y, std::uint8_t u, std::uint8_t v, std::uint8_t* rgb) const {
        const int luma = _luma[y];
        rgb[0] = cut(luma + _redOfV[v]);
        rgb[1] = cut(luma + _greenOfU[u] + _greenOfV[v]);
        rgb[2] = cut(luma + _blueOfU[u]);
    }

private:
    using Table = std::array<std::int32_t, 256>;

    static std::int32_t fixed(double value) { return static_cast<std::int32_t>(std::lround(value * 65536.0)); }
    static std::uint8_t cut(int value) { return static_cast<std::uint8_t>(std::clamp(value >> 16, 0, 255)); }

    Table _luma{};
    Table _redOfV{};
    Table _blueOfU{};
    Table _greenOfU{};
    Table _greenOfV{};
};

struct Plane {
    const std::uint8_t* bytes = nullptr;
    int stride = 0;
};

struct YuvPlanes {
    Plane y;
    Plane u;
    Plane v;
};

/// The frame's planes, and room for those that have to be taken apart.
class YuvFrame {
public:
    YuvFrame(const FrameLayout& layout, std::span<const std::uint8_t> bytes)
        : _layout(layout), _bytes(bytes), _width(static_cast<int>(layout.width)),
          _height(static_cast<int>(layout.height)), _halfWidth((_width + 1) / 2) {}

    YuvPlanes planes();

private:
    Plane given(std::size_t plane) const;
    YuvPlanes takeApartPacked();
    YuvPlanes takeApartPairs();

    const FrameLayout& _layout;
    const std::span<const std::uint8_t> _bytes;
    const int _width;
    const int _height;
    const int _halfWidth;
    std::vector<std::uint8_t> _room;
};

Plane YuvFrame::given(std::size_t plane) const {
    std::size_t offset = 0;
    for (std::size_t before = 0; before < plane; ++before)
        offset += std::size_t{_layout.strides.at(before)} * planeRows(_layout, before);
    return {_bytes.data() + offset, static_cast<int>(_layout.strides.at(plane))};
}

/// One plane of Y, U, V interleaved. YVYU and VYUY are YUYV and UYVY with U and V exchanged.
YuvPlanes YuvFrame::takeApartPacked() {
    const auto luma = static_cast<std::size_t>(_width) * static_cast<std::size_t>(_height);
    const auto chroma = static_cast<std::size_t>(_halfWidth) * static_cast<std::size_t>(_height);
    _room.resize(luma + 2 * chroma);
    std::uint8_t* y = _room.data();
    std::uint8_t* first = y + luma;
    std::uint8_t* second = first + chroma;
    const Plane source = given(0);
    const bool lumaFirst = _layout.format == FrameFormat::Yuyv || _layout.format == FrameFormat::Yvyu;
    const auto split = lumaFirst ? libyuv::YUY2ToI422 : libyuv::UYVYToI422;
    split(source.bytes, source.stride, y, _width, first, _halfWidth, second, _halfWidth, _width, _height);
    return {{y, _width}, {first, _halfWidth}, {second, _halfWidth}};
}

YuvPlanes YuvFrame::takeApartPairs() {
    const int rows = static_cast<int>(planeRows(_layout, 1));
    const auto chroma = static_cast<std::size_t>(_halfWidth) * static_cast<std::size_t>(rows);
    _room.resize(2 * chroma);
    std::uint8_t* first = _room.data();
    std::uint8_t* second = first + chroma;
    const Plane pairs = given(1);
    libyuv::SplitUVPlane(pairs.bytes, pairs.stride, first, _halfWidth, second, _halfWidth, _halfWidth, rows);
    return {given(0), {first, _halfWidth}, {second, _halfWidth}};
}

YuvPlanes YuvFrame::planes() {
    YuvPlanes planes;
    switch (planeCount(_layout.format)) {
    case 1:
        planes = takeApartPacked();
        break;
    case 2:
        planes = takeApartPairs();
        break;
    default:
        planes = {given(0), given(1), given(2)};
    }
    const FrameFormat format = _layout.format;
    if (format == FrameFormat::Yvyu || format == FrameFormat::Vyuy || format == FrameFormat::Nv21 ||
        format == FrameFormat::Yv12)
        std::swap(planes.u, planes.v);
    return planes;
}

/// A plane of colour differences in the size of the picture. They are interpolated: edges of colour are then
/// no staircases.
class FullPlane {
public:
    FullPlane(const FrameLayout& layout, const Plane& plane)
        : _width(layout.width), _bytes(std::size_t{layout.width} * layout.height) {
        const bool allRows = planeCount(layout.format) == 1 || planeRows(layout, 1) == layout.height;
        const int width = static_cast<int>(layout.width);
        const int height = static_cast<int>(layout.height);
        libyuv::ScalePlane(plane.bytes, plane.stride, (width + 1) / 2, allRows ? height : (height + 1) / 2,
                           _bytes.data(), width, width, height, libyuv::kFilterBilinear);
    }

    const std::uint8_t* row(std::uint32_t y) const { return _bytes.data() + std::size_t{y} * _width; }

private:
    const std::size_t _width;
    std::vector<std::uint8_t> _bytes;
};

} // namespace

void convertYuv(const FrameLayout& layout, std::span<const std::uint8_t> bytes, RgbImage& image) {
    YuvFrame frame(layout, bytes);
    const YuvPlanes planes = frame.planes();
    const FullPlane u(layout, planes.u);
    const FullPlane v(layout, planes.v);
    const ColourTables tables(layout.matrix, layout.range);
    std::uint8_t* target = image.pixels.data();
    for (std::uint32_t y = 0; y < layout.height; ++y) {
        const std::uint8_t* luma = planes.y.bytes + static_cast<std::size_t>(planes.y.stride) * y;
        const std::uint8_t* rowU = u.row(y);
        const std::uint8_t* rowV = v.row(y);
        for (std::uint32_t x = 0; x < layout.width; ++x, target += 3)
            tables.toRgb(luma[x], rowU[x], rowV[x], target);
    }
}

} // namespace Platform::Imaging
