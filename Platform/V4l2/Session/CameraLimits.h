#pragma once

#include <chrono>

namespace Platform::V4l2 {

/// The time limits of an open camera; tests shorten them.
struct CameraLimits {
    /// For the driver's answer to one call. The kernel gives a USB camera that is stuck 5 s for a control.
    std::chrono::milliseconds answer{12'000};
    /// For a still on a camera that delivers nothing fit.
    std::chrono::milliseconds still{30'000};
    /// From a failure of the stream to the attempt to start it again.
    std::chrono::milliseconds restart{1'000};
    /// Without any frame while one is wanted; a camera that hangs often sends again when the stream is started anew.
    /// Leaves the second half of the time that the hub waits for a still. Doubled each time, until the next still.
    std::chrono::milliseconds silence{4'000};
    /// The same where frames followed each other fast so far, at least. With frames further apart than that a camera
    /// hardly has the few that a still takes within the hub's limit.
    std::chrono::milliseconds shortSilence{2'000};
};

} // namespace Platform::V4l2
