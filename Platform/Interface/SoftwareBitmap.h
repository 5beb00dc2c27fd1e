#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace Platform {

/// The order and size of a pixel's samples in memory: Rgba8 is R, G, B, A in one byte each, Bgra8 is B, G, R, A.
/// Unknown is no format that an operation takes.
enum class BitmapPixelFormat { Unknown = 0, Rgba8 = 30, Bgra8 = 87 };

/// A decoded picture: rows from the top, without padding, four bytes a pixel. Never changes once it is shared. Any
/// thread.
struct SoftwareBitmapData {
    BitmapPixelFormat Format = BitmapPixelFormat::Unknown; ///< The order of the samples in Pixels.
    std::uint32_t PixelWidth = 0;                          ///< Pixels in a row, each of four bytes.
    std::uint32_t PixelHeight = 0;                         ///< Rows, the top one first.
    std::vector<std::uint8_t> Pixels; ///< 4 * PixelWidth * PixelHeight bytes; operations refuse another number.
};
/// Null stands for no bitmap, which every operation refuses.
using SoftwareBitmap = std::shared_ptr<const SoftwareBitmapData>;

} // namespace Platform
