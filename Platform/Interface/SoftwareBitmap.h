#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace Platform {

/// The order and size of a pixel's samples in memory: Rgba8 is R, G, B, A in one byte each, Bgra8 is
/// B, G, R, A.
enum class BitmapPixelFormat { Unknown = 0, Rgba8 = 30, Bgra8 = 87 };

/// A decoded picture: rows from the top, without padding, four bytes a pixel. Never changes, so that
/// copies share it and any thread may read.
struct SoftwareBitmapData {
    BitmapPixelFormat Format = BitmapPixelFormat::Unknown;
    std::uint32_t PixelWidth = 0;
    std::uint32_t PixelHeight = 0;
    std::vector<std::uint8_t> Pixels;
};
using SoftwareBitmap = std::shared_ptr<const SoftwareBitmapData>;

} // namespace Platform
