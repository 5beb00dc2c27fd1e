#include "Platform/V4l2/Streaming/FrameBuffers.h"

#include <algorithm>
#include <cerrno>

namespace Platform::V4l2 {
namespace {

/// One being filled, one waiting to be filled, one being looked at, one to spare.
constexpr std::uint32_t wantedBuffers = 4;

} // namespace

BufferDescription::BufferDescription(v4l2_buf_type type) {
    buffer.type = type;
    buffer.memory = V4L2_MEMORY_MMAP;
    if (type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE) {
        buffer.m.planes = planes;
        buffer.length = VIDEO_MAX_PLANES;
    }
}

std::size_t BufferDescription::planeCount() const {
    return buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE ? std::min<std::size_t>(buffer.length, VIDEO_MAX_PLANES)
                                                             : 1;
}

std::size_t BufferDescription::length(std::size_t plane) const {
    return buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE ? planes[plane].length : buffer.length;
}

off_t BufferDescription::offset(std::size_t plane) const {
    return buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE ? planes[plane].m.mem_offset : buffer.m.offset;
}

std::size_t BufferDescription::bytesUsed(std::size_t plane) const {
    return buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE ? planes[plane].bytesused : buffer.bytesused;
}

std::size_t BufferDescription::dataOffset(std::size_t plane) const {
    return buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE ? planes[plane].data_offset : 0;
}

FrameBuffers::Reservation::Reservation(DeviceNode& node, v4l2_buf_type type) : _node(node), _type(type) {
    v4l2_requestbuffers request{};
    request.count = wantedBuffers;
    request.type = type;
    request.memory = V4L2_MEMORY_MMAP;
    node.control("VIDIOC_REQBUFS", VIDIOC_REQBUFS, request);
    if (request.count == 0)
        node.raise("VIDIOC_REQBUFS", ENOMEM);
    count = request.count;
}

FrameBuffers::Reservation::~Reservation() {
    v4l2_requestbuffers request{};
    request.type = _type;
    request.memory = V4L2_MEMORY_MMAP;
    _node.tryControl(VIDIOC_REQBUFS, request); // the end of the descriptor gives back what this does not
}

FrameBuffers::FrameBuffers(DeviceNode& node, v4l2_buf_type type) : _node(node), _type(type), _reservation(node, type) {
    for (std::uint32_t index = 0; index < _reservation.count; ++index) {
        BufferDescription description(type);
        description.buffer.index = index;
        node.control("VIDIOC_QUERYBUF", VIDIOC_QUERYBUF, description.buffer);
        auto& planes = _mappings.emplace_back();
        for (std::size_t plane = 0; plane < description.planeCount(); ++plane)
            planes.emplace_back(node, description.length(plane), description.offset(plane));
    }
}

void FrameBuffers::queue(std::uint32_t index) {
    BufferDescription description(_type);
    description.buffer.index = index;
    if (_type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE)
        description.buffer.length = static_cast<std::uint32_t>(_mappings.at(index).size());
    _node.control("VIDIOC_QBUF", VIDIOC_QBUF, description.buffer);
}

} // namespace Platform::V4l2
