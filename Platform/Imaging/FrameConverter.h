#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Imaging/PictureRows.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Platform::Imaging {

/// The picture of a camera's frame, whose bytes must outlive it. Raises winrt::hresult_error for a size beyond the
/// limits of decodeImage, for strides or bytes that are too few, and for a JPEG that is damaged or of another size; its
/// rows do for the damage that shows in them. Bytes behind the frame are not looked at. Any thread.
std::unique_ptr<PictureRows> openFrame(const FrameLayout& layout, std::span<const std::uint8_t> bytes);

} // namespace Platform::Imaging
