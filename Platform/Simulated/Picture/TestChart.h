#pragma once

#include "Platform/Imaging/RgbImage.h"

#include <cstdint>

namespace Platform::Simulated {

/// The built-in scene at the neutral exposure; the same picture for the same size each time. What does
/// not fit a very small size is left out. Raises winrt::hresult_error for sizes of 0 or beyond the limits of
/// decodeImage. Any thread.
Imaging::RgbImage drawTestChart(std::uint32_t width, std::uint32_t height);

} // namespace Platform::Simulated
