#pragma once

#include <cstdint>
#include <string>

namespace Platform {

/// One picture format that a source is described with, before any capture is open. A value. Any thread.
struct MediaCaptureVideoProfileMediaDescription {
    std::uint32_t Width = 0;  ///< In pixels.
    std::uint32_t Height = 0; ///< In pixels.
    double FrameRate = 0.0;   ///< Frames a second; 30 where the camera tells none.
    std::u16string Subtype;   ///< The pixel format's name, "NV12" for instance.
};

} // namespace Platform
