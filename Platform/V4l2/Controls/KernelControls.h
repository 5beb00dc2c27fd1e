#pragma once

#include "Platform/V4l2/Controls/IntegerRange.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"

#include <cstdint>
#include <map>
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
/// own order. What a camera refuses is told by the result; a camera that is gone or does not answer raises. What a
/// control is and what its menu has is asked once, values are asked each time. The camera's thread.
class KernelControls {
public:
    explicit KernelControls(DeviceNode& node) : _node(node) {}

    /// To be called when the descriptions may be others, as in another format.
    void forget();

    /// The first of these that the camera has.
    std::optional<KernelControl> find(const std::vector<std::uint32_t>& ids);

    std::optional<std::int32_t> read(const KernelControl& control);
    /// False where the camera refuses.
    bool write(const KernelControl& control, std::int32_t value);

    bool hasMenuEntry(const KernelControl& control, std::int32_t index);
    /// The numbers that the entries of an integer menu stand for, by index.
    std::vector<std::pair<std::int32_t, std::int64_t>> menuNumbers(const KernelControl& control);

private:
    std::optional<KernelControl> describe(std::uint32_t id);
    std::optional<std::int64_t> menuEntry(const KernelControl& control, std::int32_t index);
    /// True for success, false for a refusal; raises for the rest.
    template <typename Argument> bool request(const char* name, unsigned long request, Argument& argument);

    DeviceNode& _node;
    int _error = 0; // of the latest request; 0: none
    // What there is not is known as well.
    std::map<std::uint32_t, std::optional<KernelControl>> _known;
    std::map<std::pair<std::uint32_t, std::int32_t>, std::optional<std::int64_t>> _entries; // by control and index
};

} // namespace Platform::V4l2
