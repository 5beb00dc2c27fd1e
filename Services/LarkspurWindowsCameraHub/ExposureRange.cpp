#include "Services/LarkspurWindowsCameraHub/ExposureRange.h"

#include <cmath>

namespace {

constexpr std::int32_t microsecondsPerSecond = 1000000;

/// The low five bits of the magnitude, as a 32-bit shift takes them; 0 for what is no number.
std::uint32_t shiftOf(double exponent) {
    if (!std::isfinite(exponent))
        return 0;
    return static_cast<std::uint32_t>(std::fmod(std::fabs(std::round(exponent)), 32.0));
}

} // namespace

std::chrono::microseconds exponentToMicroseconds(double exponent) {
    const std::uint32_t shift = shiftOf(exponent);
    if (exponent < 0)
        return std::chrono::microseconds(microsecondsPerSecond / static_cast<std::int64_t>(1U << shift));
    if (exponent > 0)
        return std::chrono::microseconds(
            static_cast<std::int32_t>(static_cast<std::uint32_t>(microsecondsPerSecond) << shift));
    return std::chrono::microseconds(microsecondsPerSecond);
}

double ExposureRange::exponentFromMicroseconds(std::int64_t us) const {
    if (step == 0)
        return min;
    const double exponent = std::log2(static_cast<double>(us) / 1000000.0);
    return within(min + std::round((exponent - min) / step) * step);
}

double ExposureRange::exponentFromPercent(double percent) const {
    if (percent == 0 || step == 0)
        return min;
    const double stops = std::log2(percent / 100.0);
    return within(max + std::round(stops / step) * step);
}

/// Not std::clamp: a camera's range may be inside out, and not-a-number comes out as it is.
double ExposureRange::within(double exponent) const {
    if (exponent > max)
        return max;
    if (exponent < min)
        return min;
    return exponent;
}

ExposureRange getExposureRange(const Platform::MediaCapture& capture) {
    ExposureRange range;
    const auto capabilities = capture->VideoDeviceController()->Exposure()->Capabilities();
    if (!capabilities.Supported)
        return range;
    range.min = capabilities.Min;
    range.step = capabilities.Step;
    range.max = capabilities.Max;
    return range;
}
