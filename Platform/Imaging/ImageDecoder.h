#pragma once

#include "Platform/Imaging/ImageSize.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <span>

namespace Platform::Imaging {

/// The size that the head of a PNG or JPEG file gives. Raises winrt::hresult_error for bytes that are
/// neither, for a damaged head, and for a size beyond the limits. Any thread.
ImageSize decodeImageSize(std::span<const std::uint8_t> bytes);

/// The pixels of a whole PNG or JPEG file, as stored: no gamma, colour profile or orientation is
/// applied, an alpha channel is dropped, 16-bit samples are rounded to 8. Raises winrt::hresult_error as
/// above, for data that is damaged or ends early, and for JPEGs in CMYK. Any thread.
RgbImage decodeImage(std::span<const std::uint8_t> bytes);

} // namespace Platform::Imaging
