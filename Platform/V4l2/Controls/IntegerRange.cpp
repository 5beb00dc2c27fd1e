#include "Platform/V4l2/Controls/IntegerRange.h"

#include <algorithm>
#include <cmath>

namespace Platform::V4l2 {

std::int32_t IntegerRange::nearest(double value) const {
    if (!(value > min))
        return min;
    if (value >= max)
        return max;
    const double grid = std::max(step, 1);
    const double onGrid = min + std::round((value - min) / grid) * grid;
    return static_cast<std::int32_t>(onGrid <= max ? onGrid : onGrid - grid);
}

} // namespace Platform::V4l2
