#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <span>

namespace Platform::Imaging {

/// Turns a frame in one of the formats of brightness and colour differences into R, G, B. The bytes have
/// been checked against the layout, the image has the layout's size. Any thread.
void convertYuv(const FrameLayout& layout, std::span<const std::uint8_t> bytes, RgbImage& image);

} // namespace Platform::Imaging
