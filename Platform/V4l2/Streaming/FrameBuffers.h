#pragma once

#include "Platform/V4l2/Kernel/DeviceNode.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace Platform::V4l2 {

/// A part of a driver's buffer, mapped for as long as the object lives. The camera's thread.
class Mapping {
public:
    Mapping(DeviceNode& node, std::size_t length, off_t offset)
        : _node(&node), _address(node.map(length, offset)), _length(length) {}
    ~Mapping() {
        if (_address != nullptr)
            _node->unmap(_address, _length);
    }
    Mapping(Mapping&& other) noexcept
        : _node(other._node), _address(std::exchange(other._address, nullptr)), _length(other._length) {}
    Mapping& operator=(Mapping&&) = delete;

    std::span<const std::uint8_t> bytes() const { return {static_cast<const std::uint8_t*>(_address), _length}; }

private:
    DeviceNode* _node;
    void* _address;
    std::size_t _length;
};

/// A buffer as the driver describes it, with room for its planes.
struct BufferDescription {
    explicit BufferDescription(v4l2_buf_type type);
    BufferDescription(const BufferDescription&) = delete;
    BufferDescription& operator=(const BufferDescription&) = delete;

    std::size_t planeCount() const;
    std::size_t length(std::size_t plane) const;
    off_t offset(std::size_t plane) const;
    std::size_t bytesUsed(std::size_t plane) const;
    std::size_t dataOffset(std::size_t plane) const;

    v4l2_buffer buffer{};
    v4l2_plane planes[VIDEO_MAX_PLANES]{};
};

/// The buffers of a node: requested and mapped by the constructor, given back by the destructor. The node must
/// outlive them. The camera's thread.
class FrameBuffers {
public:
    /// Raises, with nothing left behind.
    FrameBuffers(DeviceNode& node, v4l2_buf_type type);

    std::size_t count() const { return _mappings.size(); }
    std::size_t planeCount(std::uint32_t index) const { return _mappings.at(index).size(); }

    /// Hands the buffer to the driver. Raises.
    void queue(std::uint32_t index);

    std::span<const std::uint8_t> bytes(std::uint32_t index, std::size_t plane) const {
        return _mappings.at(index).at(plane).bytes();
    }

private:
    /// The driver's side; goes after the mappings, as a driver keeps buffers that are mapped.
    class Reservation {
    public:
        Reservation(DeviceNode& node, v4l2_buf_type type);
        ~Reservation();
        Reservation(const Reservation&) = delete;
        Reservation& operator=(const Reservation&) = delete;

        std::uint32_t count = 0;

    private:
        DeviceNode& _node;
        const v4l2_buf_type _type;
    };

    DeviceNode& _node;
    const v4l2_buf_type _type;
    Reservation _reservation;
    std::vector<std::vector<Mapping>> _mappings; // by buffer and plane
};

} // namespace Platform::V4l2
