#pragma once

#include <cstdint>

namespace Platform::Imaging {

/// The longest side (what a Canvas can have) and the most pixels that a file may claim to have: room for
/// the largest cameras, and a bound of 300 megabytes on the pixels that a few forged bytes can make us allocate; up to
/// 600 more are libjpeg's, for a file of several scans.
constexpr std::uint32_t maxImageSide = 32767;
constexpr std::uint64_t maxImagePixels = 100'000'000;

struct ImageSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

} // namespace Platform::Imaging
