#pragma once

#include "Platform/Imaging/RgbImage.h"

#include <cstdint>

namespace Platform::Imaging {

/// The whole picture at another size, its proportions not kept: averaged over areas where it shrinks,
/// interpolated where it grows, the same pixels where the size stays. Raises winrt::hresult_error for a
/// picture without pixels and for sizes of 0 or beyond the decoder's limits. Any thread.
RgbImage scaleTo(const RgbImage& image, std::uint32_t width, std::uint32_t height);

} // namespace Platform::Imaging
