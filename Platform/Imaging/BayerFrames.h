#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <span>

namespace Platform::Imaging {

bool isBayer(FrameFormat format);

/// Turns a mosaic into R, G, B: the colours that a pixel lacks are the mean of its neighbours that have them.
/// No white balance or gamma is applied. The bytes have been checked against the layout, the image has the
/// layout's size. Raises winrt::hresult_error for less than two pixels by two. Any thread.
void convertBayer(const FrameLayout& layout, std::span<const std::uint8_t> bytes, RgbImage& image);

} // namespace Platform::Imaging
