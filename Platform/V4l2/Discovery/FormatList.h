#pragma once

#include "Platform/V4l2/Discovery/PixelFormats.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"

#include <cstdint>
#include <vector>

namespace Platform::V4l2 {

/// One picture format that a node can be set to.
struct StreamFormat {
    const PixelFormat* pixelFormat = nullptr;
    std::uint32_t width = 0;  // pixels
    std::uint32_t height = 0; // pixels
    v4l2_fract interval{};    // seconds a frame; a denominator of 0: not known, and cannot be set

    double frameRate() const;
};

struct FormatList {
    std::vector<StreamFormat> formats; // those that can be turned into R, G, B, the preferred ones last
    std::vector<std::uint32_t> codes;  // all pixel formats of the node, in its order
};

/// All formats of a node whose buffers are of that type. Raises.
FormatList listFormats(DeviceNode& node, v4l2_buf_type type);

} // namespace Platform::V4l2
