#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/V4l2/Discovery/NodeDescription.h"
#include "Platform/V4l2/Streaming/FrameBuffers.h"
#include "Platform/V4l2/Streaming/Freshness.h"

#include <optional>
#include <vector>

namespace Platform::V4l2 {

/// A full buffer, taken from the driver until it is given back.
struct Frame {
    std::uint32_t index = 0;
    bool isMarkedAsError = false;
    bool isEmpty = false; // no bytes and no time: no frame at all, but a failure's sign
    FrameTime time;
    std::vector<std::span<const std::uint8_t>> planes;
};

/// The running stream of a node, in the format that the node is set to. The node must outlive it.
/// The camera's thread.
class Stream {
public:
    /// Starts. Raises, with nothing left behind.
    Stream(DeviceNode& node, const NodeDescription& description);
    /// Stops, whatever state the device is in.
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    const Imaging::FrameLayout& layout() const { return _layout; }

    /// The oldest full buffer, or nothing while there is none. Raises.
    std::optional<Frame> dequeue();
    /// Raises.
    void giveBack(const Frame& frame) { _buffers.queue(frame.index); }

    /// The frame's bytes as the layout has them, or nothing for a frame that is not whole.
    std::optional<std::vector<std::uint8_t>> copyWhole(const Frame& frame) const;

private:
    std::optional<std::vector<std::uint8_t>> copyPlanes(const Frame& frame) const;

    DeviceNode& _node;
    const v4l2_buf_type _type;
    bool _separatePlanes = false;
    Imaging::FrameLayout _layout;
    FrameBuffers _buffers;
};

} // namespace Platform::V4l2
