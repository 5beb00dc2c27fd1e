#include "Platform/V4l2/Controls/ExposureScale.h"

#include <algorithm>
#include <cmath>

namespace Platform::V4l2 {
namespace {

constexpr double unitsPerSecond = 10'000.0; // of V4L2_CID_EXPOSURE_ABSOLUTE

// The stops between the shortest and the longest exposure that 32 bits can tell.
constexpr int shortestStop = -14;
constexpr int longestStop = 17;

/// Whether a camera that is set to that stop says so afterwards.
bool canBeSet(int stop, const IntegerRange& range) {
    const double units = ExposureScale::unitsOf(stop);
    if (std::round(units) < range.min || std::round(units) > range.max)
        return false;
    return std::lround(ExposureScale::exponentOf(range.nearest(units))) == stop;
}

} // namespace

double ExposureScale::exponentOf(std::int32_t units) {
    // An exposure of nothing is shown as the shortest that the unit has.
    return std::log2(std::max(units, 1) / unitsPerSecond);
}

double ExposureScale::unitsOf(double exponent) { return std::exp2(exponent) * unitsPerSecond; }

MediaDeviceControlCapabilities ExposureScale::grid(const IntegerRange& range) {
    MediaDeviceControlCapabilities capabilities;
    int count = 0;
    for (int stop = shortestStop; stop <= longestStop; ++stop) {
        if (!canBeSet(stop, range))
            continue;
        capabilities.Max = stop;
        if (count++ == 0)
            capabilities.Min = stop;
    }
    if (count == 0)
        capabilities.Min = capabilities.Max = std::round(exponentOf(range.min));
    capabilities.Step = capabilities.Max > capabilities.Min ? 1.0 : 0.0;
    return capabilities;
}

} // namespace Platform::V4l2
