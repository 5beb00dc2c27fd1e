#pragma once

#include <cstdint>

namespace Platform::V4l2 {

/// What a control of the kernel can be set to.
struct IntegerRange {
    std::int32_t min = 0;
    std::int32_t max = 0;
    std::int32_t step = 1;

    /// The value within the range that is nearest; no number gives min.
    std::int32_t nearest(double value) const;
};

} // namespace Platform::V4l2
