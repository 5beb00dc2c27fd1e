#pragma once

#include "Platform/Imaging/FrameFormat.h"

#include <cstddef>
#include <cstdint>

namespace Platform::Imaging {

/// One plane of colour differences at a row of the picture, half as wide as that, rounded up. Before the first sample
/// and behind the last one stands another of the same value; slack of 32 bytes more may be read.
struct ChromaRows {
    const std::uint8_t* near = nullptr; // the row of the plane that is the nearest
    const std::uint8_t* far = nullptr;  // the nearest on the other side; the same where the plane has as many rows as
                                        // the picture, or ends
};

/// Turns rows of brightness and colour differences into R, G, B, the differences interpolated: edges of colour are then
/// no staircases. A sample differs by 1 at most from what real numbers give, rounded. Any thread.
class YuvToRgb {
public:
    YuvToRgb(YuvMatrix matrix, SampleRange range);

    /// Reads `width` samples of brightness, and writes 3 * width of R, G, B.
    void convertRow(const std::uint8_t* luma, const ChromaRows& u, const ChromaRows& v, std::size_t width,
                    std::uint8_t* rgb) const;

    /// What a sample adds to the colours: `luma` times twice its distance from black, and the others times four times
    /// its distance from 128, as fractions of 2^15.
    struct Factors {
        std::int16_t black = 0;
        std::int16_t luma = 0;
        std::int16_t redOfV = 0;
        std::int16_t greenOfU = 0;
        std::int16_t greenOfV = 0;
        std::int16_t blueOfU = 0;
    };

private:
    Factors _factors;
};

} // namespace Platform::Imaging
