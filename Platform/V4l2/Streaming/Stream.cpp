#include "Platform/V4l2/Streaming/Stream.h"

#include "Platform/Shared/PlatformError.h"
#include "Platform/V4l2/Streaming/FrameColours.h"

#include <algorithm>
#include <cerrno>

namespace Platform::V4l2 {
namespace {

v4l2_format currentFormat(DeviceNode& node, v4l2_buf_type type) {
    v4l2_format format{};
    format.type = type;
    node.control("VIDIOC_G_FMT", VIDIOC_G_FMT, format);
    return format;
}

const PixelFormat& pixelFormatOf(DeviceNode& node, const v4l2_format& format) {
    // The two interfaces begin with the same members.
    const std::uint32_t code = format.fmt.pix.pixelformat;
    const PixelFormat* const pixelFormat = findPixelFormat(code);
    if (pixelFormat == nullptr)
        throw Shared::platformError("VIDIOC_G_FMT", node.path(), winrt::result::fail,
                                    "the pixel format " + pixelFormatName(code) + " cannot be turned into a picture");
    return *pixelFormat;
}

/// The driver's time, if it is one of the clock that we have, and not in its future.
FrameTime timeOf(const v4l2_buffer& buffer) {
    FrameTime time;
    time.arrival = std::chrono::steady_clock::now();
    time.number = buffer.sequence;
    time.atEnd = (buffer.flags & V4L2_BUF_FLAG_TSTAMP_SRC_MASK) != V4L2_BUF_FLAG_TSTAMP_SRC_SOE;
    if ((buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) != V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC)
        return time;
    const TimePoint stamp{std::chrono::seconds(buffer.timestamp.tv_sec) +
                          std::chrono::microseconds(buffer.timestamp.tv_usec)};
    if (stamp > TimePoint{} && stamp <= time.arrival)
        time.stamp = stamp;
    return time;
}

} // namespace

Stream::Stream(DeviceNode& node, const NodeDescription& description)
    : _node(node), _type(description.bufferType), _buffers(node, _type) {
    const v4l2_format format = currentFormat(node, _type);
    const PixelFormat& pixelFormat = pixelFormatOf(node, format);
    _separatePlanes = pixelFormat.separatePlanes;
    _layout = frameLayout(format, pixelFormat);
    for (std::uint32_t index = 0; index < _buffers.count(); ++index)
        _buffers.queue(index);
    int type = static_cast<int>(_type);
    node.control("VIDIOC_STREAMON", VIDIOC_STREAMON, type);
}

Stream::~Stream() {
    int type = static_cast<int>(_type);
    _node.tryControl(VIDIOC_STREAMOFF, type); // of a device that is gone there is nothing to stop
}

std::optional<Frame> Stream::dequeue() {
    BufferDescription description(_type);
    const int error = _node.tryControl(VIDIOC_DQBUF, description.buffer);
    if (error == EAGAIN)
        return std::nullopt;
    if (error != 0)
        _node.raise("VIDIOC_DQBUF", error);
    Frame frame;
    frame.index = description.buffer.index;
    if (frame.index >= _buffers.count())
        _node.raise("VIDIOC_DQBUF", EIO);
    frame.isMarkedAsError = (description.buffer.flags & V4L2_BUF_FLAG_ERROR) != 0;
    frame.time = timeOf(description.buffer);
    std::size_t used = 0;
    for (std::size_t plane = 0; plane < _buffers.planeCount(frame.index); ++plane) {
        const auto bytes = _buffers.bytes(frame.index, plane);
        const std::size_t end = std::min(description.bytesUsed(plane), bytes.size());
        const std::size_t start = std::min(description.dataOffset(plane), end);
        frame.planes.push_back(bytes.subspan(start, end - start));
        used += end - start;
    }
    frame.isEmpty = used == 0 && !frame.time.stamp;
    return frame;
}

std::optional<std::vector<std::uint8_t>> Stream::copyWhole(const Frame& frame) const {
    if (frame.isMarkedAsError || frame.planes.empty() || frame.planes.front().empty())
        return std::nullopt;
    if (_separatePlanes)
        return copyPlanes(frame);
    const auto bytes = frame.planes.front();
    if (bytes.size() < Imaging::frameBytes(_layout))
        return std::nullopt;
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
}

std::optional<std::vector<std::uint8_t>> Stream::copyPlanes(const Frame& frame) const {
    const std::size_t count = Imaging::planeCount(_layout.format);
    if (frame.planes.size() < count)
        return std::nullopt;
    std::vector<std::uint8_t> copy; // grows: what the layout asks for may be more than any driver has delivered
    for (std::size_t plane = 0; plane < count; ++plane) {
        const std::size_t size = std::size_t{_layout.strides.at(plane)} * Imaging::planeRows(_layout, plane);
        const auto bytes = frame.planes[plane];
        if (bytes.size() < size)
            return std::nullopt;
        copy.insert(copy.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    }
    return copy;
}

} // namespace Platform::V4l2
