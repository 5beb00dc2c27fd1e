#pragma once

#include "Platform/Interface/MediaDeviceControl.h"
#include "Platform/V4l2/Controls/IntegerRange.h"

#include <cstdint>

namespace Platform::V4l2 {

/// Between the kernel's exposure (units of 100 microseconds) and ours (log2 of seconds). This is the one place
/// that knows both.
class ExposureScale {
public:
    static double exponentOf(std::int32_t units);
    static double unitsOf(double exponent);

    /// The whole stops that the range can really be set to, as Min, Max and Step 1; one value and Step 0 where
    /// there is at most one.
    static MediaDeviceControlCapabilities grid(const IntegerRange& range);
};

} // namespace Platform::V4l2
