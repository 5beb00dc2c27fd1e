#pragma once

#include "Platform/Imaging/RgbImage.h"

namespace Platform::Simulated {

/// Multiplies the picture's linear light by 2^stops and clips it. 0 leaves every pixel as it is, and so
/// does not-a-number; any other value, infinite ones too, is allowed. Any thread.
void expose(Imaging::RgbImage& image, double stops);

} // namespace Platform::Simulated
