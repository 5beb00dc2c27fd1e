#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"

#include <cstdint>
#include <string>

namespace Platform::V4l2 {

/// A pixel format of the kernel that can be turned into R, G, B.
struct PixelFormat {
    std::uint32_t code; // V4L2_PIX_FMT_...
    Imaging::FrameFormat format;
    bool separatePlanes; // each plane has memory of its own
    int quality;         // of two formats of one size and rate the higher one is preferred
};

/// Null for a format that cannot be turned into R, G, B.
const PixelFormat* findPixelFormat(std::uint32_t code);

/// The four characters of the code, without blanks at the end: "NV12".
std::string pixelFormatName(std::uint32_t code);

/// What a format is a picture of: Color, Infrared (brightness alone) or Depth.
MediaFrameSourceKind kindOfPixelFormat(std::uint32_t code);

/// Whether the samples are R, G, B before any conversion.
bool isRgb(Imaging::FrameFormat format);

} // namespace Platform::V4l2
