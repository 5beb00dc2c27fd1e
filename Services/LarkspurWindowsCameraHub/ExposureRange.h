#pragma once

#include "Platform/Interface/MediaCapture.h"

#include <chrono>
#include <cstdint>

/// Marks an exposure that could not be set or read back.
constexpr std::chrono::microseconds exposureUnset = std::chrono::microseconds::min();

/// The time of an exposure in log2 of seconds, by whole stops: the exponent is rounded, halves away from
/// zero, and 1000000 is shifted by its low five bits in signed 32 bits. Above 2^11 s the result wraps.
std::chrono::microseconds exponentToMicroseconds(double exponent);

/// What a camera's exposure control can do, in log2 of seconds.
struct ExposureRange {
    double step = 0.0; // 0: the exposure cannot be changed
    double min = -4.0;
    double max = -4.0;

    std::chrono::microseconds minExposureInUs() const { return exponentToMicroseconds(min); }
    std::chrono::microseconds maxExposureInUs() const { return exponentToMicroseconds(max); }

    /// The control's value nearest to that time, on the grid counted from `min`, within the range. A
    /// negative time gives not-a-number.
    double exponentFromMicroseconds(std::int64_t us) const;

    /// The control's value that many per cent below the longest exposure, in stops (50 is one stop
    /// below), on the grid counted from `max`, within the range; 0 stands for `min`.
    double exponentFromPercent(double percent) const;

private:
    double within(double exponent) const;
};

/// The range of the capture's exposure control, the default record where it has none. Raises the
/// platform's errors.
ExposureRange getExposureRange(const Platform::MediaCapture& capture);
