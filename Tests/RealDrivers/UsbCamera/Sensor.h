#pragma once

#include "Tests/RealDrivers/UsbCamera/CameraModel.h"

#include <chrono>
#include <cstdint>
#include <deque>

namespace UsbCamera {

/// How one frame was taken.
struct FrameState {
    std::uint32_t number = 0;
    std::uint32_t exposure = 0; // 100 us
    bool autoExposure = false;
    bool autoFocus = false;
    bool autoWhiteBalance = false;
};

/// Takes frames, one after the other, with settings that reach it as late as the model says. An automatic exposure
/// comes nearer to what the scene needs with each frame.
class Sensor {
public:
    explicit Sensor(const CameraModel& model);

    /// In force for frames that follow behind the model's latency.
    void set(const FrameState& wanted);

    /// The next frame has been exposed.
    FrameState next();

    /// From the end of one frame to the end of the next: the exposure may take longer than the rate allows.
    std::chrono::microseconds interval() const;

    /// What the camera would tell of the exposure now.
    std::uint32_t exposure() const { return _state.autoExposure ? _state.exposure : _wanted.exposure; }

private:
    struct Change {
        std::uint32_t fromFrame;
        FrameState state;
    };

    const CameraModel& _model;
    FrameState _state;
    FrameState _wanted;
    std::deque<Change> _changes;
};

} // namespace UsbCamera
