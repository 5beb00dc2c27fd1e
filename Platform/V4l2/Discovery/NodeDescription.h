#pragma once

#include "Platform/V4l2/Discovery/FormatList.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Platform::V4l2 {

/// The text of a field, which has no zero at its end where the text fills it.
template <std::size_t Size> std::string textIn(const __u8 (&field)[Size]) {
    return {field, std::find(field, field + Size, __u8{0})};
}

/// What a camera's node says of itself.
struct NodeDescription {
    std::string driver;
    std::string card; // the device's name
    std::string bus;  // where the device is, the same for all nodes of one device
    v4l2_buf_type bufferType = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    MediaFrameSourceKind kind = MediaFrameSourceKind::Custom;
    std::vector<StreamFormat> formats; // empty where none can be turned into R, G, B

    bool isMultiPlanar() const { return bufferType == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE; }
};

/// Nothing for a node that is no camera's: output, conversion, metadata, VBI, radio, touch, or the entrance of
/// a pipeline that must be put together first. Raises.
std::optional<NodeDescription> describeNode(DeviceNode& node);

} // namespace Platform::V4l2
