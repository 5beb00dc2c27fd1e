#pragma once

#include <cstdint>
#include <string>

namespace Platform {

/// One picture format that a source is described with, before any capture is open. A value. Any thread.
struct MediaCaptureVideoProfileMediaDescription {
    std::uint32_t Width = 0;  // pixels
    std::uint32_t Height = 0; // pixels
    double FrameRate = 0.0;   // frames a second
    std::u16string Subtype;   // the pixel format's name, "NV12" for instance
};

} // namespace Platform
