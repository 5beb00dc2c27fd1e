#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <span>

namespace Platform::Imaging {

/// The picture of a camera's frame. Raises winrt::hresult_error for a size beyond the limits of decodeImage,
/// for strides or bytes that are too few, and for a JPEG that is damaged or of another size. Bytes behind
/// the frame are not looked at. Any thread.
RgbImage convertFrame(const FrameLayout& layout, std::span<const std::uint8_t> bytes);

} // namespace Platform::Imaging
