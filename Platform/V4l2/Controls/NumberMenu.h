#pragma once

#include "Platform/V4l2/Controls/KernelControls.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace Platform::V4l2 {

/// A control of the kernel with a menu of numbers, in thousandths, made for one operation. A camera that is gone or
/// does not answer raises. The camera's thread.
class NumberMenu {
public:
    using Entries = std::vector<std::pair<std::int32_t, std::int64_t>>; // index and thousandths

    NumberMenu(KernelControls& controls, std::uint32_t id);

    /// Whether the camera has the control, with at least one number.
    bool isUsable() const { return !entries.empty(); }

    /// The number in force; nothing where the camera does not tell.
    std::optional<double> value();

    /// An entry's number in the control's own unit.
    static double numberOf(const Entries::value_type& entry);

    KernelControls& controls;
    const std::optional<KernelControl> control;
    const Entries entries;
};

} // namespace Platform::V4l2
