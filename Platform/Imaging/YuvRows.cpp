#include "Platform/Imaging/YuvRows.h"

#include <libyuv/convert.h>
#include <libyuv/planar_functions.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace Platform::Imaging {
namespace {

// What YuvToRgb reads around a row of colour differences.
constexpr std::size_t before = 1;
constexpr std::size_t behind = 1 + 32;

bool isPacked(FrameFormat format) { return planeCount(format) == 1; }

/// YVYU and VYUY are YUYV and UYVY with U and V exchanged, and so on.
bool isVFirst(FrameFormat format) {
    return format == FrameFormat::Yvyu || format == FrameFormat::Vyuy || format == FrameFormat::Nv21 ||
           format == FrameFormat::Yv12;
}

void repeatEnds(std::vector<std::uint8_t>& samples, int width) {
    const std::size_t last = before + static_cast<std::size_t>(width) - 1;
    samples[0] = samples[before];
    samples[last + 1] = samples[last];
}

} // namespace

YuvRows::YuvRows(const FrameLayout& layout, std::span<const std::uint8_t> bytes)
    : PictureRows({layout.width, layout.height}), _layout(layout), _bytes(bytes), _toRgb(layout.matrix, layout.range),
      _width(static_cast<int>(layout.width)), _chromaWidth((_width + 1) / 2),
      _chromaRows(isPacked(layout.format) ? layout.height : planeRows(layout, 1)),
      _luma(isPacked(layout.format) ? layout.width : 0) {
    for (Chroma& chroma : _chroma) {
        chroma.u.resize(before + static_cast<std::size_t>(_chromaWidth) + behind);
        chroma.v.resize(chroma.u.size());
    }
}

const std::uint8_t* YuvRows::plane(std::size_t index, std::uint32_t row) const {
    std::size_t offset = std::size_t{_layout.strides.at(index)} * row;
    for (std::size_t earlier = 0; earlier < index; ++earlier)
        offset += std::size_t{_layout.strides.at(earlier)} * planeRows(_layout, earlier);
    return _bytes.data() + offset;
}

void YuvRows::takeChroma(std::uint32_t row, std::uint8_t* first, std::uint8_t* second) {
    switch (planeCount(_layout.format)) {
    case 1: {
        const bool lumaFirst = _layout.format == FrameFormat::Yuyv || _layout.format == FrameFormat::Yvyu;
        const auto split = lumaFirst ? libyuv::YUY2ToI422 : libyuv::UYVYToI422;
        split(plane(0, row), 0, _luma.data(), 0, first, 0, second, 0, _width, 1);
        return;
    }
    case 2:
        libyuv::SplitUVPlane(plane(1, row), 0, first, 0, second, 0, _chromaWidth, 1);
        return;
    default:
        std::memcpy(first, plane(1, row), static_cast<std::size_t>(_chromaWidth));
        std::memcpy(second, plane(2, row), static_cast<std::size_t>(_chromaWidth));
    }
}

const YuvRows::Chroma& YuvRows::chromaAt(std::uint32_t row) {
    Chroma& chroma = _chroma.at(row % 2);
    if (chroma.isTaken && chroma.row == row)
        return chroma;
    std::uint8_t* first = chroma.u.data() + before;
    std::uint8_t* second = chroma.v.data() + before;
    if (isVFirst(_layout.format))
        std::swap(first, second);
    takeChroma(row, first, second);
    repeatEnds(chroma.u, _chromaWidth);
    repeatEnds(chroma.v, _chromaWidth);
    chroma.row = row;
    chroma.isTaken = true;
    return chroma;
}

/// The row of colour differences on the other side of a row of the picture from the one that is the nearest; that one
/// itself where there is none. Of two rows that share their nearest the upper one lies between it and the one above.
std::uint32_t YuvRows::farRow(std::uint32_t row) const {
    const std::uint32_t near = row / 2;
    if (row % 2 == 0)
        return near == 0 ? near : near - 1;
    return std::min(near + 1, _chromaRows - 1);
}

void YuvRows::read(std::uint8_t* row) {
    const std::uint32_t y = _next++;
    const bool allRows = _chromaRows == _layout.height;
    const Chroma& far = chromaAt(allRows ? y : farRow(y));
    const Chroma& near = chromaAt(allRows ? y : y / 2);
    const std::uint8_t* const luma = isPacked(_layout.format) ? _luma.data() : plane(0, y);
    _toRgb.convertRow(luma, {near.u.data() + before, far.u.data() + before},
                      {near.v.data() + before, far.v.data() + before}, static_cast<std::size_t>(_width), row);
}

} // namespace Platform::Imaging
