#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <variant>

namespace CameraHub {

/// An exposure within what the camera has, in stops: 100 is the longest, 50 one stop below it, 25 two stops; 0 is the
/// shortest. From 0 to 100.
struct Percent {
    constexpr explicit Percent(int percent) : value(percent) {}

    int value;
};

/// What to take.
struct CaptureRequest {
    static constexpr std::chrono::microseconds longestExposure{std::numeric_limits<std::int32_t>::max()};
    /// The hub answers nobody while a camera settles.
    static constexpr std::chrono::milliseconds longestSettle = std::chrono::minutes(1);

    /// The uid of the camera, in UTF-8 without NUL. The hub refuses an empty one (CaptureRefused).
    std::string camera;
    /// A time from 1 us to longestExposure, or per cent. The camera gets the nearest that it has.
    std::variant<std::chrono::microseconds, Percent> exposure = std::chrono::microseconds(50'000);
    /// How long the hub waits between a change of the exposure and the still, from 0 to longestSettle.
    std::chrono::milliseconds settle{0};
};

} // namespace CameraHub
