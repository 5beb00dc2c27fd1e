#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/V4l2/Discovery/PixelFormats.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"

namespace Platform::V4l2 {

/// The layout of the frames that a node delivers in that format, with colours as the driver reports them. Where
/// the driver reports "default", the kernel's rules for the colour space decide.
Imaging::FrameLayout frameLayout(const v4l2_format& format, const PixelFormat& pixelFormat);

} // namespace Platform::V4l2
