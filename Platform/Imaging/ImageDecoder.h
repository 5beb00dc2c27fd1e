#pragma once

#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <span>

namespace Platform::Imaging {

/// The longest side (what a Canvas can have) and the most pixels that a file may claim to have: room for
/// the largest cameras, and a bound of 300 megabytes on what a few forged bytes can make us allocate.
constexpr std::uint32_t MaxImageSide = 32767;
constexpr std::uint64_t MaxImagePixels = 100'000'000;

struct ImageSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The size that the head of a PNG or JPEG file gives. Raises winrt::hresult_error for bytes that are
/// neither, for a damaged head, and for a size beyond the limits. Any thread.
ImageSize decodeImageSize(std::span<const std::uint8_t> bytes);

/// The pixels of a whole PNG or JPEG file, as stored: no gamma, colour profile or orientation is
/// applied, an alpha channel is dropped, 16-bit samples are rounded to 8. Raises winrt::hresult_error as
/// above, for data that is damaged or ends early, and for JPEGs in CMYK. Any thread.
RgbImage decodeImage(std::span<const std::uint8_t> bytes);

} // namespace Platform::Imaging
