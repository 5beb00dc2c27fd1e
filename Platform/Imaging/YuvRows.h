#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Imaging/PictureRows.h"
#include "Platform/Imaging/YuvToRgb.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Platform::Imaging {

/// A frame in one of the formats of brightness and colour differences.
class YuvRows final : public PictureRows {
public:
    /// The bytes have been checked against the layout, and outlive the object.
    YuvRows(const FrameLayout& layout, std::span<const std::uint8_t> bytes);

    void read(std::uint8_t* row) override;

private:
    /// A row of each plane of colour differences, taken out of the frame.
    struct Chroma {
        std::uint32_t row = 0;
        bool isTaken = false;
        std::vector<std::uint8_t> u;
        std::vector<std::uint8_t> v;
    };

    const std::uint8_t* plane(std::size_t index, std::uint32_t row) const;
    const Chroma& chromaAt(std::uint32_t row);
    void takeChroma(std::uint32_t row, std::uint8_t* first, std::uint8_t* second);
    std::uint32_t farRow(std::uint32_t row) const;

    const FrameLayout _layout;
    const std::span<const std::uint8_t> _bytes;
    const YuvToRgb _toRgb;
    const int _width;
    const int _chromaWidth;
    const std::uint32_t _chromaRows;
    std::vector<std::uint8_t> _luma; // of packed frames: one row
    std::array<Chroma, 2> _chroma;   // those of even and of odd rows, of which two in a row are needed at once
    std::uint32_t _next = 0;
};

} // namespace Platform::Imaging
