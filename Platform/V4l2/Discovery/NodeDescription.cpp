#include "Platform/V4l2/Discovery/NodeDescription.h"

#include <utility>

namespace Platform::V4l2 {
namespace {

constexpr std::uint32_t capture = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE;
constexpr std::uint32_t noCamera = V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_VIDEO_OUTPUT_MPLANE | V4L2_CAP_VIDEO_M2M |
                                   V4L2_CAP_VIDEO_M2M_MPLANE | V4L2_CAP_TOUCH | V4L2_CAP_IO_MC;

bool isCamera(std::uint32_t capabilities) {
    return (capabilities & capture) != 0 && (capabilities & V4L2_CAP_STREAMING) != 0 && (capabilities & noCamera) == 0;
}

/// Infrared or Depth where all formats are; Custom where no format is of use.
MediaFrameSourceKind kindOf(const FormatList& list) {
    bool depth = false;
    for (const std::uint32_t code : list.codes) {
        const MediaFrameSourceKind kind = kindOfPixelFormat(code);
        if (kind == MediaFrameSourceKind::Color)
            return list.formats.empty() ? MediaFrameSourceKind::Custom : MediaFrameSourceKind::Color;
        depth = depth || kind == MediaFrameSourceKind::Depth;
    }
    if (list.codes.empty())
        return MediaFrameSourceKind::Custom;
    return depth ? MediaFrameSourceKind::Depth : MediaFrameSourceKind::Infrared;
}

} // namespace

std::optional<NodeDescription> describeNode(DeviceNode& node) {
    v4l2_capability capability{};
    node.control("VIDIOC_QUERYCAP", VIDIOC_QUERYCAP, capability);
    // `capabilities` is what all nodes of the device can do together.
    const bool perNode = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0;
    const std::uint32_t capabilities = perNode ? capability.device_caps : capability.capabilities;
    if (!isCamera(capabilities))
        return std::nullopt;
    NodeDescription description;
    description.driver = textIn(capability.driver);
    description.card = textIn(capability.card);
    description.bus = textIn(capability.bus_info);
    description.bufferType =
        (capabilities & V4L2_CAP_VIDEO_CAPTURE) != 0 ? V4L2_BUF_TYPE_VIDEO_CAPTURE : V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    FormatList list = listFormats(node, description.bufferType);
    description.kind = kindOf(list);
    description.formats = std::move(list.formats);
    return description;
}

} // namespace Platform::V4l2
