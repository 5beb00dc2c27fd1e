#pragma once

#include <chrono>
#include <string>

namespace CameraHub {

/// In pixels.
struct Resolution {
    int width = 0;
    int height = 0;
};

/// A camera, as the hub lists it.
struct Camera {
    /// What CaptureRequest::camera takes. A camera that comes back has the one that it had.
    std::string uid;
    /// May be empty.
    std::string make;
    /// May be empty.
    std::string model;
    Resolution resolution;
    /// Both are the same where the exposure cannot be changed.
    std::chrono::microseconds shortestExposure{0};
    std::chrono::microseconds longestExposure{0};
};

} // namespace CameraHub
