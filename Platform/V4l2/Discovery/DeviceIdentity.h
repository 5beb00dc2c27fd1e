#pragma once

#include "Platform/Interface/Guid.h"
#include "Platform/V4l2/Kernel/DeviceLister.h"

#include <string>

namespace Platform::V4l2 {

/// The text that names a node for good: the same after plugging in again and after a start of the machine. With
/// a serial number it follows the camera from port to port, without one it names the port as well. ASCII.
std::string deviceIdOf(const VideoNode& node);

/// The same with the port in any case, for a camera whose serial number another one has, too.
std::string deviceIdWithPlaceOf(const VideoNode& node);

/// Maker and model as people know them; empty where nothing tells.
std::string manufacturerOf(const VideoNode& node);
std::string modelOf(const VideoNode& node);

/// An identifier that depends on the text alone.
Guid hashedGuid(const std::string& text);

} // namespace Platform::V4l2
