#pragma once

#include "Tests/RealDrivers/UsbCamera/ByteWriter.h"
#include "Tests/RealDrivers/UsbCamera/CameraModel.h"
#include "Tests/RealDrivers/UsbCamera/Script.h"
#include "Tests/RealDrivers/UsbCamera/Sensor.h"
#include "Tests/RealDrivers/UsbCamera/UsbIpLink.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace UsbCamera {

/// The streaming interface: what is agreed upon, and the frames on their way to the kernel.
class FrameStream {
public:
    FrameStream(const CameraModel& model, UsbIpLink& link, Script& script);

    /// The answer to a GET request; nothing for a refusal.
    std::optional<Bytes> get(std::uint8_t request, std::uint8_t selector) const;
    /// Whether the value has been taken. What is committed to begins to run.
    bool set(std::uint8_t selector, const Bytes& value);
    void stop();

    /// The kernel waits for bytes of frames.
    void want(const Request& request);
    /// Whether the request was waiting; it waits no longer.
    bool forget(std::uint32_t requestNumber);

    /// A frame has been taken. One that comes before its predecessor has gone out is lost, as in a camera.
    void take(const FrameState& frame);

private:
    struct Choice {
        std::uint8_t format = 1; // both count from 1
        std::uint8_t frame = 1;
    };

    static Choice choiceFrom(const CameraModel& model, const Bytes& value);
    Bytes probeBlock() const;
    void send();
    void refuse();
    Bytes header(bool isLast) const;

    const CameraModel& _model;
    UsbIpLink& _link;
    Script& _script;
    Choice _probed;
    Choice _committed;
    bool _running = false;
    std::deque<Request> _wanted;
    Bytes _frame;
    bool _marked = false; // the frame bears the error bit
    std::size_t _sent = 0;
    std::uint8_t _toggle = 0;
};

} // namespace UsbCamera
