#pragma once

#include <cstdint>
#include <vector>

namespace Platform::Imaging {

/// A picture in memory: R, G, B, one byte each, rows from the top, no padding, so that pixels.size()
/// is 3 * width * height.
struct RgbImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> pixels;
};

} // namespace Platform::Imaging
