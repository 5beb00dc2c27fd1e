#pragma once

#include "Platform/Imaging/RgbImage.h"
#include "Platform/Interface/HresultError.h"

#include <cstdint>
#include <string_view>

namespace Platform::Imaging {

/// Raises winrt::hresult_error with that text, which must be ASCII.
[[noreturn]] void raise(winrt::hresult code, std::string_view text);

/// Raises invalidArgument unless the picture has pixels and they fill its size. `operation` starts the text.
void requirePixels(const RgbImage& image, std::string_view operation);

/// Raises winrt::hresult_error for a size of 0 or beyond maxImageSide and maxImagePixels.
void requireSizeWithinLimits(std::uint64_t width, std::uint64_t height, std::string_view operation);

} // namespace Platform::Imaging
