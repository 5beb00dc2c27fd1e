#pragma once

#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <span>

namespace Platform::Imaging {

/// The picture of one frame of a Motion JPEG stream. As decodeImage, but for what cameras do: the Huffman
/// tables may be missing (the standard ones are meant then), and a few stray bytes before or in place of the end
/// mark, or any behind it, are no damage. Raises winrt::hresult_error for data that is damaged or ends
/// early. Any thread.
RgbImage readMotionJpeg(std::span<const std::uint8_t> bytes);

} // namespace Platform::Imaging
