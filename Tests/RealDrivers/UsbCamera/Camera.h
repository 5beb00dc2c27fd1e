#pragma once

#include "Tests/RealDrivers/UsbCamera/CameraModel.h"
#include "Tests/RealDrivers/UsbCamera/Controls.h"
#include "Tests/RealDrivers/UsbCamera/FrameStream.h"
#include "Tests/RealDrivers/UsbCamera/Script.h"
#include "Tests/RealDrivers/UsbCamera/Sensor.h"
#include "Tests/RealDrivers/UsbCamera/UsbIpLink.h"

#include <chrono>
#include <optional>

namespace UsbCamera {

/// The camera from plugging it in to pulling it out.
class Camera {
public:
    Camera(const CameraModel& model, unsigned port, Script& script);

    int socket() const { return _link.socket(); }

    /// Deals with one request of the kernel; false when the kernel has let go.
    bool serve();
    /// Takes the frames that are due; the time until the next one.
    std::chrono::milliseconds takeFrames();

private:
    void control(const Request& request);
    std::optional<Bytes> answer(const Request& request);
    std::optional<Bytes> standardAnswer(const Request& request);
    std::optional<Bytes> classAnswer(const Request& request);

    const CameraModel& _model;
    Script& _script;
    UsbIpLink _link;
    Sensor _sensor;
    Controls _controls;
    FrameStream _stream;
    std::chrono::steady_clock::time_point _nextFrame;
};

} // namespace UsbCamera
