#pragma once

#include "Platform/V4l2/Controls/IntegerRange.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace Platform::V4l2 {

/// A control of a node as its driver describes it.
struct KernelControl {
    std::uint32_t id = 0;
    bool isMenu = false;
    bool isReadOnly = false;
    IntegerRange range;
};

/// Single controls of a node, each call a request of its own: a driver carries several in one request out in its
/// own order. What a camera refuses is told by the result; a camera that is gone or does not answer raises.
/// The camera's thread.
class KernelControls {
public:
    explicit KernelControls(DeviceNode& node) : _node(node) {}

    /// The first of these that the camera has.
    std::optional<KernelControl> find(const std::vector<std::uint32_t>& ids);

    std::optional<std::int32_t> read(const KernelControl& control);
    /// False where the camera refuses.
    bool write(const KernelControl& control, std::int32_t value);

    bool hasMenuEntry(const KernelControl& control, std::int32_t index);
    /// The numbers that the entries of an integer menu stand for, by index.
    std::vector<std::pair<std::int32_t, std::int64_t>> menuNumbers(const KernelControl& control);

private:
    /// True for success, false for a refusal; raises for the rest.
    template <typename Argument> bool request(const char* name, unsigned long request, Argument& argument);

    DeviceNode& _node;
};

} // namespace Platform::V4l2
