#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Imaging/PictureRows.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Platform::Imaging {

bool isBayer(FrameFormat format);

/// A mosaic as a picture: the colours that a pixel lacks are the mean of its neighbours that have them. No white
/// balance or gamma is applied.
class BayerRows final : public PictureRows {
public:
    /// The bytes have been checked against the layout, and outlive the object. Raises winrt::hresult_error for less
    /// than two pixels by two.
    BayerRows(const FrameLayout& layout, std::span<const std::uint8_t> bytes);

    void read(std::uint8_t* row) override;

private:
    /// The samples of a row of the frame, in 8 bits.
    struct Samples {
        std::uint32_t row = 0;
        bool areTaken = false;
        std::vector<std::uint8_t> bytes;
    };
    /// Where the same column stands in three rows.
    struct Neighbourhood {
        const std::uint8_t* above;
        const std::uint8_t* here;
        const std::uint8_t* below;
    };

    const std::uint8_t* samplesAt(std::uint32_t row);
    static void fillGreen(const Neighbourhood& at, std::size_t horizontal, std::uint8_t* pixel);
    static void fillOther(const Neighbourhood& at, std::size_t own, std::uint8_t* pixel);

    const FrameLayout _layout;
    const std::span<const std::uint8_t> _bytes;
    const std::array<std::size_t, 4> _block; // the colours of two by two pixels, row by row
    const bool _tenBits;
    std::array<Samples, 3> _samples;
    std::uint32_t _next = 0;
};

} // namespace Platform::Imaging
