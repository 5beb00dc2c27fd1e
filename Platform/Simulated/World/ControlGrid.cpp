#include "Platform/Simulated/World/ControlGrid.h"

#include <algorithm>
#include <cmath>

namespace Platform::Simulated {

double ControlGrid::nearestPoint(double value) const {
    const double within = std::max(min, std::min(max, value));
    if (step == 0.0 || max <= min)
        return within;
    // Steps such as 0.1 have no exact form: without this allowance a value that is written as half way
    // or as a point of the grid would miss it by a rounding error.
    constexpr double allowance = 1e-9;
    const double width = std::abs(step);
    const double position = (within - min) / width;
    if (std::abs(position - std::round(position)) < allowance)
        return within;
    const double last = std::floor((max - min) / width + allowance);
    const double point = std::min(std::floor(position + 0.5 + allowance), last);
    return std::min(max, min + point * width);
}

} // namespace Platform::Simulated
